#include "platform/applescript/evaluator/Evaluator.h"
#include "platform/applescript/syntax/Parser.h"
#include "platform/applescript/values/Display.h"
#include "platform/desk/applications/calendar/CalendarApplication.h"
#include "platform/desk/applications/calendar/CalendarDictionary.h"
#include "platform/desk/applications/reminders/RemindersApplication.h"
#include "platform/desk/applications/reminders/RemindersDictionary.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <map>

namespace mervo::desk {
namespace {

using platform::Collection;
using platform::Entity;
using platform::Event;
using platform::EventChange;
using platform::Reminder;
using platform::ReminderChange;

constexpr std::int64_t kDay = 1774598400; // 2026-03-27 08:00 UTC

/// What lies in the store, and what was asked of it.
struct World {
    std::map<Entity, std::vector<Collection>> collections = {
        {Entity::events, {{.id = "c1", .title = "Home", .color = "#ff8000"}, {.id = "c2", .title = "Feed"}}},
        {Entity::reminders, {{.id = "l1", .title = "Home"}, {.id = "l2", .title = "Work"}}},
    };
    std::vector<Event> events = {};
    std::vector<Reminder> reminders = {};
    std::string failure = {}; ///< what the next commit fails with
    int reads = 0;
    int commits = 0;

    World() { collections[Entity::events][1].isWritable = false; }
    void event(const std::string& id, const std::string& calendar)
    {
        Event event{.item = id, .uid = id, .title = "Title " + id, .start = kDay, .end = kDay + 3600};
        event.calendar = *std::ranges::find(collections[Entity::events], calendar, &Collection::id);
        events.push_back(event);
    }
    void reminder(const std::string& id, const std::string& list)
    {
        Reminder reminder{.item = id, .uid = id, .title = "Title " + id};
        reminder.list = *std::ranges::find(collections[Entity::reminders], list, &Collection::id);
        reminders.push_back(reminder);
    }
};

template <typename Part>
void put(Part& part, const std::optional<Part>& value)
{
    part = value.value_or(part);
}

/// Changes are real at once; `commit` only fails when it is told to.
class WorldStore final : public platform::EventStore {
public:
    explicit WorldStore(World& world)
        : world_(world)
    {
    }

    platform::Authorization authorization(Entity) const override { return platform::Authorization::fullAccess; }
    bool requestFullAccess(Entity, platform::AccessPurpose) override { return true; }
    std::vector<Collection> collections(Entity entity) override { return world_.collections[entity]; }
    Collection defaultCollection(Entity entity) override { return world_.collections[entity].front(); }
    std::vector<Event> events(platform::TimeSpan) override { return {}; }
    std::vector<Event> allEvents(const Collection& calendar) override
    {
        ++world_.reads;
        auto found = world_.events;
        std::erase_if(found, [&](const Event& event) { return event.calendar.id != calendar.id; });
        return found;
    }
    std::vector<Reminder> reminders(const std::vector<Collection>& lists) override
    {
        ++world_.reads;
        auto found = world_.reminders;
        std::erase_if(found, [&](const Reminder& reminder) {
            return std::ranges::find(lists, reminder.list.id, &Collection::id) == lists.end();
        });
        return found;
    }

    std::string add(const Collection& calendar, const EventChange& event) override
    {
        world_.event("new" + std::to_string(world_.commits), calendar.id);
        change(world_.events.back(), event);
        return world_.events.back().uid;
    }
    void change(const Event& event, const EventChange& change) override
    {
        Event& kept = *std::ranges::find(world_.events, event.item, &Event::item);
        put(kept.title, change.title);
        put(kept.status, change.status);
        put(kept.start, change.start);
    }
    void remove(const Event& event) override
    {
        std::erase_if(world_.events, [&](const Event& each) { return each.item == event.item; });
    }
    std::string add(const Collection& list, const ReminderChange& reminder) override
    {
        world_.reminder("new" + std::to_string(world_.commits), list.id);
        change(world_.reminders.back(), reminder);
        return world_.reminders.back().uid;
    }
    void change(const Reminder& reminder, const ReminderChange& change) override
    {
        const auto kept = std::ranges::find(world_.reminders, reminder.item, &Reminder::item);
        if (kept == world_.reminders.end())
            throw platform::EventStoreError("It is gone.");
        put(kept->title, change.title);
        put(kept->isCompleted, change.isCompleted);
        put(kept->absoluteAlarms, change.absoluteAlarms);
        kept->due = change.clearDue ? std::nullopt : change.due ? change.due : kept->due;
    }
    void move(const Reminder& reminder, const Collection& list) override
    {
        std::ranges::find(world_.reminders, reminder.item, &Reminder::item)->list = list;
    }
    void remove(const Reminder& reminder) override
    {
        std::erase_if(world_.reminders, [&](const Reminder& each) { return each.item == reminder.item; });
    }
    Collection addCollection(Entity entity, const std::string& title) override
    {
        return world_.collections[entity].emplace_back(Collection{.id = "new", .title = title});
    }
    void rename(const Collection& collection, const std::string& title) override { same(collection).title = title; }
    void setColor(const Collection& collection, const std::string& color) override { same(collection).color = color; }
    void remove(const Collection& collection, Entity entity) override
    {
        std::erase_if(world_.collections[entity], [&](const Collection& each) { return each.id == collection.id; });
    }
    void commit() override
    {
        ++world_.commits;
        if (!world_.failure.empty())
            throw platform::EventStoreError(world_.failure);
    }

private:
    Collection& same(const Collection& collection)
    {
        auto& all = world_.collections[collection.id[0] == 'c' ? Entity::events : Entity::reminders];
        return *std::ranges::find(all, collection.id, &Collection::id);
    }

    World& world_;
};

class EventApplications : public testing::Test {
protected:
    World world;

    /// The display form of what a script gives, or the number and message of its error.
    std::string run(const std::string& application, const std::string& statements)
    {
        applescript::ApplicationRegistry registry;
        const auto open = [this] { return std::make_unique<WorldStore>(world); };
        registry.add({"Calendar"}, "com.apple.iCal", calendarDictionary,
            [&] { return std::make_unique<CalendarApplication>(open, Sections()); });
        registry.add({"Reminders"}, "com.apple.reminders", remindersDictionary,
            [&] { return std::make_unique<RemindersApplication>(open, Sections()); });
        try {
            const auto script = applescript::parse(
                "tell application \"" + application + "\"\n" + statements + "\nend tell\n", registry);
            applescript::Evaluator evaluator(*script, registry, [](const std::string&) {});
            return applescript::displayForm(evaluator.run({}));
        } catch (const applescript::ScriptError& error) {
            return std::to_string(error.number) + ": " + error.message;
        }
    }
    std::string calendar(const std::string& statements) { return run("Calendar", statements); }
    std::string reminders(const std::string& statements) { return run("Reminders", statements); }
};

TEST_F(EventApplications, RefuseToWriteWhereTheyMayNot)
{
    world.event("e", "c2");
    const std::string refusal = "-10000: Calendar got an error: “Feed” cannot be written to.";
    for (const char* statement : {"set summary of event 1 of calendar \"Feed\" to \"x\"",
             "delete event 1 of calendar \"Feed\"", "delete calendar \"Feed\"",
             "set name of calendar \"Feed\" to \"x\"", "set color of calendar \"Feed\" to {0, 0, 0}",
             "tell calendar \"Feed\" to make new event with properties {start date:(current date)}"})
        EXPECT_EQ(calendar(statement), refusal) << statement;
    EXPECT_EQ(world.commits, 0);
}

TEST_F(EventApplications, PassOnWhyTheStoreFailed)
{
    world.event("e", "c1");
    world.reminder("r", "l1");
    world.failure = "The disk is full.";
    EXPECT_EQ(calendar("set summary of event 1 of calendar \"Home\" to \"x\""),
        "-10000: Calendar got an error: The disk is full.");
    EXPECT_EQ(reminders("set completed of reminder 1 to true"), "-10000: Reminders got an error: The disk is full.");
}

TEST_F(EventApplications, RefuseValuesThatAPropertyCannotHave)
{
    world.event("e", "c1");
    world.reminder("r", "l1");
    const std::string front = "Calendar got an error: ";
    EXPECT_EQ(calendar("set status of event 1 of calendar 2 to \"x\""),
        "-10006: " + front + "Can’t set status of event 1 of calendar 2 to \"x\".");
    EXPECT_EQ(calendar("set uid of event 1 of calendar 2 to \"x\""),
        "-10006: " + front + "Can’t set uid of event 1 of calendar 2 to \"x\".");
    EXPECT_EQ(calendar("make new event"), "-10000: " + front + "An event needs a start date.");
    EXPECT_EQ(calendar("set start date of event 1 of calendar 2 to (current date) + 4000000 * days"),
        "-10000: " + front + "A date lies between the years 1 and 9999.");
    EXPECT_EQ(reminders("set priority of reminder 1 to 10").substr(0, 6), "-10006");
    EXPECT_EQ(reminders("set color of list 1 to \"#12345g\"").substr(0, 6), "-10006");
    EXPECT_EQ(reminders("make new list").substr(0, 6), "-10000");
    EXPECT_EQ(world.commits, 0);
}

TEST_F(EventApplications, AnswerABulkRequestWithOneLook)
{
    for (int i = 0; i < 50; ++i)
        world.reminder(std::to_string(i), i % 2 == 0 ? "l1" : "l2");
    EXPECT_EQ(
        reminders("set n to name of every reminder of list \"Work\"\n"
                  "count of (every reminder of list \"Work\" whose name contains \"title 1\" and completed is false)"),
        "6");
    EXPECT_EQ(world.reads, 1);
    EXPECT_EQ(
        reminders("repeat with r in (get every reminder of list \"Home\")\nset completed of r to true\nend repeat\n"
                  "count of (reminders whose completed is true)"),
        "25");
    EXPECT_LE(world.reads, 4) << "changes through handles need no look each";
}

TEST_F(EventApplications, KeepHandlesAsLongAsTheirObjectsAreThere)
{
    world.reminder("a", "l1");
    world.reminder("b", "l1");
    EXPECT_EQ(reminders("set r to reminder 2\ndelete reminder 1\nset name of r to \"x\"\nname of r"), "x");
    EXPECT_EQ(reminders("set r to reminder 1\ndelete (get reminder 1)\nset completed of r to true"),
        "-1728: Reminders got an error: Can’t get completed of reminder id \"b\" of list id \"l1\".");
    EXPECT_EQ(calendar("set c to calendar \"Home\"\nset name of c to \"House\"\n{name of c, exists calendar \"Home\"}"),
        "House, false");
    EXPECT_EQ(calendar("set c to calendar \"House\"\ndelete c\n{exists c, count of calendars}"), "false, 1");
}

TEST_F(EventApplications, MakeAndMoveWhereTheyAreTold)
{
    EXPECT_EQ(reminders("name of container of (make new reminder with properties {name:\"x\"})"), "Home");
    EXPECT_EQ(
        reminders("set r to move reminder 1 to list \"Work\"\n{name of container of r, count of reminders of list 1}"),
        "Work, 0");
    EXPECT_EQ(reminders("move reminder 1 to account 1"),
        "-10000: Reminders got an error: This desk’s Reminders moves reminders to lists, and nothing else.");
    EXPECT_EQ(reminders("tell list \"Work\" to make new reminder at end of reminders with properties {name:\"y\"}\n"
                        "name of reminders of list \"Work\""),
        "x, y");
    EXPECT_EQ(
        calendar(
            "set d to current date\nset e to make new event at end of events of calendar \"Home\" with properties "
            "{summary:\"s\", start date:d, status:tentative}\n{summary of e, status of e, (start date of e) is d}"),
        "s, tentative, true");
}

TEST_F(EventApplications, TakeMidnightForAWholeDay)
{
    const std::string date = "set d to current date\nset time of d to 0\n";
    reminders(date + "make new reminder with properties {name:\"x\", due date:d}");
    EXPECT_FALSE(world.reminders[0].due->time);
    reminders(date + "set due date of reminder 1 to d + 60");
    EXPECT_EQ(world.reminders[0].due->time->minute, 1);
    EXPECT_EQ(reminders(date + "(allday due date of reminder 1) is d"), "true");
    reminders("set due date of reminder 1 to missing value");
    EXPECT_FALSE(world.reminders[0].due);
}

} // namespace
} // namespace mervo::desk
