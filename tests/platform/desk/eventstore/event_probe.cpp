// The owner's store on the command line, for the tests with other programs: event_probe <what> [word...]
//
//   events FROM TO         one line for each occurrence: calendar|title|start|end|all-day|location (seconds since 1970)
//   reminders              one line for each: list|title|done or todo|due
//   add-event TITLE START  add-task TITLE YEAR MONTH DAY
//   retitle OLD NEW        the first occurrence, or the reminder, of that title; likewise the following
//   move TITLE SECONDS     complete TITLE     remove TITLE     clear (all completed reminders)

#include "platform/eventkit.h"

#include <cstdio>
#include <exception>
#include <functional>
#include <string>
#include <vector>

namespace {

using namespace mervo::platform;

using Words = std::vector<std::string>;
constexpr TimeSpan kAlways{1'735'689'600, 1'830'297'600}; // 2025 to 2027

std::vector<Reminder> all(EventStore& store)
{
    return store.reminders(store.collections(Entity::reminders));
}

void printEvents(EventStore& store, TimeSpan span)
{
    for (const Event& event : store.events(span)) {
        std::printf("%s|%s|%lld|%lld|%d|%s\n", event.calendar.title.c_str(), event.title.c_str(),
            static_cast<long long>(event.start), static_cast<long long>(event.end), event.isAllDay ? 1 : 0,
            event.location.c_str());
    }
}

void printReminders(EventStore& store)
{
    for (const Reminder& task : all(store)) {
        std::printf("%s|%s|%s|", task.list.title.c_str(), task.title.c_str(), task.isCompleted ? "done" : "todo");
        if (task.due)
            std::printf("%04d-%02d-%02d", task.due->year, task.due->month, task.due->day);
        std::puts("");
    }
}

void onFirst(EventStore& store, const std::string& title, const std::function<void(const Event&)>& event,
    const std::function<void(const Reminder&)>& reminder)
{
    for (const Event& found : store.events(kAlways)) {
        if (found.title == title)
            return event(found);
    }
    for (const Reminder& found : all(store)) {
        if (found.title == title)
            return reminder(found);
    }
    throw EventStoreError("nothing has the title " + title);
}

void change(EventStore& store, const Words& words)
{
    const std::string& what = words.at(0);
    if (what == "add-event") {
        store.add(store.defaultCollection(Entity::events),
            EventChange{.title = words.at(1), .start = std::stoll(words.at(2))});
    } else if (what == "add-task") {
        const DateComponents due{std::stoi(words.at(2)), std::stoi(words.at(3)), std::stoi(words.at(4))};
        store.add(store.defaultCollection(Entity::reminders), ReminderChange{.title = words.at(1), .due = due});
    } else if (what == "retitle") {
        onFirst(
            store, words.at(1), [&](const Event& event) { store.change(event, {.title = words.at(2)}); },
            [&](const Reminder& task) { store.change(task, {.title = words.at(2)}); });
    } else if (what == "move") {
        onFirst(
            store, words.at(1),
            [&](const Event& event) { store.change(event, {.start = event.start + std::stoll(words.at(2))}); },
            [](const Reminder&) {});
    } else if (what == "complete") {
        onFirst(
            store, words.at(1), [](const Event&) {},
            [&](const Reminder& task) { store.change(task, {.isCompleted = true}); });
    } else if (what == "remove") {
        onFirst(
            store, words.at(1), [&](const Event& event) { store.remove(event); },
            [&](const Reminder& task) { store.remove(task); });
    } else if (what == "clear") {
        for (const Reminder& task : all(store)) {
            if (task.isCompleted)
                store.remove(task);
        }
    } else {
        throw EventStoreError("no such command: " + what);
    }
    store.commit();
}

} // namespace

int main(int count, char** arguments)
{
    try {
        const Words words(arguments + 1, arguments + count);
        const auto store = openEventStore();
        if (words.at(0) == "events")
            printEvents(*store, {std::stoll(words.at(1)), std::stoll(words.at(2))});
        else if (words.at(0) == "reminders")
            printReminders(*store);
        else
            change(*store, words);
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
}
