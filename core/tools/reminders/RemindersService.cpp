#include "core/tools/reminders/RemindersService.h"

#include "core/foundation/Text.h"
#include "core/policy/Argument.h"
#include "core/tools/LocalTime.h"
#include "core/tools/OneLine.h"
#include "platform/unicode.h"

#include <algorithm>
#include <functional>
#include <map>
#include <tuple>
#include <utility>

namespace mervo {

namespace {

using platform::Collection;
using platform::DateComponents;
using platform::Entity;
using platform::EventStore;
using platform::Reminder;

std::string line(const std::string& text)
{
    return onOneLine(text, " ");
}

/// The key by which titles stand in order, whatever their letter case: accents count where the letters are equal.
auto titleKey(const std::string& title)
{
    const std::string folded = platform::foldCase(title);
    return std::tuple(platform::withoutMarks(folded), folded, title);
}

std::vector<Collection> listsNamed(EventStore& store, const std::string& name)
{
    std::vector<Collection> lists = store.collections(Entity::reminders);
    const std::string wanted = platform::composed(name);
    std::erase_if(lists, [&](const Collection& list) { return platform::composed(list.title) != wanted; });
    if (lists.empty())
        throw RemindersService::RemError::noList(name);
    return lists;
}

/// Those of the lists that a name means.
std::vector<Reminder> remindersIn(EventStore& store, const std::string& list)
{
    return store.reminders(list.empty() ? store.collections(Entity::reminders) : listsNamed(store, list));
}

std::vector<Reminder> completedIn(EventStore& store, const std::string& list)
{
    std::vector<Reminder> found = remindersIn(store, list);
    std::erase_if(found, [](const Reminder& reminder) { return !reminder.isCompleted; });
    return found;
}

/// Due dates in order; none is later than all.
auto dueKey(const Reminder& reminder)
{
    const DateComponents due = reminder.due.value_or(DateComponents{});
    const platform::TimeOfDay time = due.time.value_or(platform::TimeOfDay{});
    return std::tuple(!reminder.due, due.year, due.month, due.day, time.hour, time.minute, time.second);
}

bool isEarlier(const Reminder* a, const Reminder* b)
{
    const auto key = [](const Reminder* reminder) {
        return std::tuple(dueKey(*reminder), std::tie(reminder->list.title, reminder->title));
    };
    return key(a) < key(b);
}

std::string listed(const Reminder& reminder)
{
    return (reminder.list.title.empty() ? "?" : line(reminder.list.title)) + " || "
        + (reminder.isCompleted ? "done" : "todo") + " || " + (reminder.due ? LocalTime::minute(*reminder.due) : "")
        + " || " + line(reminder.title);
}

DateComponents parsedDue(const std::string& due)
{
    if (Formats::moment.fault(due) != Format::Fault::none)
        throw RemindersService::RemError::badDate(due);
    const auto number = [&](std::size_t at, std::size_t count) { return std::stoi(due.substr(at, count)); };
    DateComponents date{.year = number(0, 4), .month = number(5, 2), .day = number(8, 2)};
    if (due.size() > std::string_view("YYYY-MM-DD").size())
        date.time = platform::TimeOfDay{.hour = number(11, 2), .minute = number(14, 2)};
    return date;
}

/// The only incomplete reminder among these whose title contains a text.
Reminder theOnly(std::vector<Reminder> reminders, const std::string& name)
{
    std::erase_if(reminders, [&](const Reminder& reminder) {
        return reminder.isCompleted || !Text::containsIgnoringCase(reminder.title, name);
    });
    if (reminders.empty())
        throw RemindersService::RemError::noMatch(name);
    if (reminders.size() > 1)
        throw RemindersService::RemError::ambiguous(name, reminders.size());
    return std::move(reminders.front());
}

platform::ReminderChange newDue(const Reminder& reminder, const DateComponents& due)
{
    platform::ReminderChange change{.due = due};
    if (reminder.due && !reminder.absoluteAlarms.empty()) {
        const std::int64_t later = LocalTime::moment(due) - LocalTime::moment(*reminder.due);
        change.absoluteAlarms = reminder.absoluteAlarms;
        for (std::int64_t& alarm : *change.absoluteAlarms)
            alarm += later;
    }
    return change;
}

std::size_t countOrNone(const std::function<std::size_t()>& count) noexcept
{
    try {
        return count();
    } catch (const std::exception&) {
        return 0;
    }
}

} // namespace

using RemError = RemindersService::RemError;

RemError RemError::noList(const std::string& name)
{
    return RemError("no Reminders list named \"" + name + "\".");
}

RemError RemError::noMatch(const std::string& name)
{
    return RemError("no incomplete reminder whose name contains \"" + name + "\".");
}

RemError RemError::ambiguous(const std::string& name, std::size_t count)
{
    return RemError(std::to_string(count) + " incomplete reminders match \"" + name
        + "\" - make name= unique (or scope with list=).");
}

RemError RemError::badDate(const std::string& value)
{
    return RemError("can't parse due=\"" + value + "\" - use YYYY-MM-DD or \"YYYY-MM-DD HH:MM\".");
}

RemindersService::RemindersService(EventKitAccess::OpenStore open)
    : open_(std::move(open))
{
}

std::string RemindersService::scope(const std::string& list)
{
    return list.empty() ? "all lists" : "list \"" + list + "\"";
}

std::string RemindersService::listAll() const
{
    const auto store = EventKitAccess::store(open_, Entity::reminders);
    std::vector<Collection> lists = store->collections(Entity::reminders);
    if (lists.empty())
        return "(no reminder lists)";
    std::ranges::sort(lists, {}, [](const Collection& list) { return std::tuple(titleKey(list.title), list.id); });
    struct Count {
        std::size_t active = 0;
        std::size_t done = 0;
    };
    std::map<std::string, Count> counts;
    for (const Reminder& reminder : store->reminders(lists)) {
        Count& count = counts[reminder.list.id];
        ++(reminder.isCompleted ? count.done : count.active);
    }
    std::vector<std::string> lines;
    for (const Collection& list : lists) {
        const Count count = counts[list.id];
        lines.push_back(
            line(list.title) + " || active=" + std::to_string(count.active) + " || done=" + std::to_string(count.done));
    }
    return Text::join(lines, "\n");
}

std::string RemindersService::find(const std::string& list, Completed completed, std::int64_t limit) const
{
    const auto store = EventKitAccess::store(open_, Entity::reminders);
    const std::vector<Reminder> all = remindersIn(*store, list);
    std::vector<const Reminder*> found; // moving them about would be most of the work
    for (const Reminder& reminder : all) {
        if (completed == Completed::included || !reminder.isCompleted)
            found.push_back(&reminder);
    }
    std::ranges::stable_sort(found, isEarlier);
    std::vector<std::string> lines;
    for (const Reminder* reminder : found) {
        if (static_cast<std::int64_t>(lines.size()) >= limit)
            break;
        lines.push_back(listed(*reminder));
    }
    return Text::join(lines, "\n");
}

std::string RemindersService::update(const std::string& name, const std::string& list, const std::string& due) const
{
    const auto store = EventKitAccess::store(open_, Entity::reminders);
    const Reminder reminder = theOnly(remindersIn(*store, list), name);
    store->change(reminder, newDue(reminder, parsedDue(due)));
    store->commit();
    return "OK \"" + line(reminder.title) + "\" due " + (reminder.due ? LocalTime::day(*reminder.due) : "(none)")
        + " -> " + due + " (list \"" + line(reminder.list.title) + "\")";
}

std::string RemindersService::deleteList(const std::string& name) const
{
    const auto store = EventKitAccess::store(open_, Entity::reminders);
    const std::vector<Collection> lists = listsNamed(*store, name);
    for (const Collection& list : lists)
        store->remove(list, Entity::reminders);
    store->commit();
    return "OK deleted list \"" + name + "\""
        + (lists.size() > 1 ? " (" + std::to_string(lists.size()) + " lists shared that name)" : "");
}

std::string RemindersService::clearCompleted(const std::string& list) const
{
    const auto store = EventKitAccess::store(open_, Entity::reminders);
    const std::vector<Reminder> completed = completedIn(*store, list);
    for (const Reminder& reminder : completed)
        store->remove(reminder);
    store->commit();
    return "OK deleted " + std::to_string(completed.size()) + " completed reminder(s) from " + scope(list);
}

std::size_t RemindersService::listCount(const std::string& name) const noexcept
{
    return countOrNone([&] {
        const auto store = EventKitAccess::store(open_, Entity::reminders);
        return store->reminders(listsNamed(*store, name)).size();
    });
}

std::size_t RemindersService::completedCount(const std::string& list) const noexcept
{
    return countOrNone([&] {
        const auto store = EventKitAccess::store(open_, Entity::reminders);
        return completedIn(*store, list).size();
    });
}

} // namespace mervo
