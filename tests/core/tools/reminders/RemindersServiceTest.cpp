#include "core/tools/reminders/RemindersService.h"

#include "core/tools/LocalTime.h"
#include "tests/core/tools/calendar/MemoryStore.h"

#include <gmock/gmock.h>
#include <stdlib.h>
#include <time.h>

namespace mervo {
namespace {

using platform::Authorization;
using platform::DateComponents;
using platform::Reminder;
using platform::TimeOfDay;
using test::outcome;
using testing::ElementsAre;
using Completed = RemindersService::Completed;

constexpr DateComponents kFriday{.year = 2026, .month = 3, .day = 27};
constexpr DateComponents kFridayNoon{.year = 2026, .month = 3, .day = 27, .time = TimeOfDay{.hour = 12}};

class Reminders : public testing::Test {
protected:
    test::MemoryStore kept{.collections = {{.id = "1", .title = "Work"}, {.id = "2", .title = "home"},
                               {.id = "3", .title = "Work"}, {.id = "4", .title = "Épicerie"}}};
    RemindersService service{kept.opener()};

    void SetUp() override
    {
        ::setenv("TZ", "Europe/Paris", 1);
        ::tzset();
    }
    void TearDown() override
    {
        ::setenv("TZ", "UTC", 1);
        ::tzset();
    }

    /// One in the list of this index, with its number among all as item.
    Reminder& add(std::size_t list, const std::string& title, bool isCompleted = false)
    {
        return kept.reminders.emplace_back(Reminder{.item = std::to_string(kept.reminders.size()),
            .list = kept.collections[list],
            .title = title,
            .isCompleted = isCompleted});
    }
    std::string find(const std::string& list = {}, std::int64_t limit = 50, Completed completed = Completed::leftOut)
    {
        return outcome([&] { return service.find(list, completed, limit); });
    }
    std::string update(const std::string& name, const std::string& due, const std::string& list = {})
    {
        return outcome([&] { return service.update(name, list, due); });
    }
};

TEST_F(Reminders, AreAskedForUnderTheirOwnLabel)
{
    kept.authorization = Authorization::writeOnly;
    EXPECT_EQ(find(),
        "error: Reminders access not granted. Allow it in System Settings → Privacy & Security → Reminders, then "
        "retry.");
    EXPECT_THAT(kept.done, ElementsAre("open", "request reminders"));
}

TEST_F(Reminders, AreCountedByList)
{
    add(0, "a");
    add(0, "b", true);
    add(2, "c");
    add(1, "d", true);
    EXPECT_EQ(service.listAll(),
        "Épicerie || active=0 || done=0\nhome || active=0 || done=1\nWork || active=1 || done=1\n"
        "Work || active=1 || done=0");
    kept.collections.clear();
    EXPECT_EQ(service.listAll(), "(no reminder lists)");
}

TEST_F(Reminders, AreListedByDueDateListAndTitle)
{
    add(0, "undated");
    add(0, "noon").due = kFridayNoon;
    add(0, "z").due = kFriday;
    add(1, "y\nz").due = kFriday;
    add(0, "a").due = kFriday;
    Reminder& early = add(2, "early", true);
    early.due = DateComponents{.year = 2025, .month = 12, .day = 31};
    const std::string open = "Work || todo || 2026-03-27 00:00 || a\nWork || todo || 2026-03-27 00:00 || z\n"
                             "home || todo || 2026-03-27 00:00 || y z\nWork || todo || 2026-03-27 12:00 || noon\n"
                             "Work || todo ||  || undated";
    EXPECT_EQ(find(), open);
    EXPECT_EQ(find({}, 50, Completed::included), "Work || done || 2025-12-31 00:00 || early\n" + open);
    EXPECT_EQ(find("home"), "home || todo || 2026-03-27 00:00 || y z");
    EXPECT_EQ(find({}, 1), "Work || todo || 2026-03-27 00:00 || a");
    EXPECT_EQ(find({}, 0), "");
    EXPECT_EQ(find({}, -1), "");
    EXPECT_EQ(find("work"), "error: no Reminders list named \"work\".");
    EXPECT_EQ(find("E\u0301picerie"), "");
}

TEST_F(Reminders, RefuseWhatMeansNoneOrSeveral)
{
    add(0, "Call Ann");
    add(1, "call bob");
    add(0, "done call", true);
    EXPECT_EQ(update("CALL", "soon"),
        "error: 2 incomplete reminders match \"CALL\" - make name= unique (or scope with list=).");
    EXPECT_EQ(update("done", "2026-01-01"), "error: no incomplete reminder whose name contains \"done\".");
    EXPECT_EQ(update("ann", "2026-01-01", "Nope"), "error: no Reminders list named \"Nope\".");
    EXPECT_THAT(kept.done, ElementsAre("open", "open", "open"));
    EXPECT_EQ(update("call", "2026-01-01", "home"), "OK \"call bob\" due (none) -> 2026-01-01 (list \"home\")");
}

TEST_F(Reminders, TakeDatesInTwoFormsOnly)
{
    add(0, "x").due = kFriday;
    for (const char* bad : {"", "soon", "2026-02-29", "2026-1-01", "2026-01-01T10:00", "2026-01-01 24:00",
             "2026-01-01 9:00", "2026-01-01 09:00:00", " 2026-01-01", "2026-01-01 ", "02026-01-01", "2026-01-32"}) {
        EXPECT_EQ(update("x", bad),
            "error: can't parse due=\"" + std::string(bad) + "\" - use YYYY-MM-DD or \"YYYY-MM-DD HH:MM\".");
    }
    EXPECT_EQ(update("x", "2028-02-29"), "OK \"x\" due 2026-03-27 -> 2028-02-29 (list \"Work\")");
    EXPECT_FALSE(kept.reminderChange.due->time);
    EXPECT_EQ(update("x", "2026-01-01 09:05"), "OK \"x\" due 2026-03-27 -> 2026-01-01 09:05 (list \"Work\")");
    EXPECT_EQ(LocalTime::minute(*kept.reminderChange.due), "2026-01-01 09:05");
}

TEST_F(Reminders, KeepTheirAlarmsAtTheSameDistance)
{
    Reminder& dated = add(0, "x");
    dated.due = kFridayNoon;
    const std::int64_t noon = LocalTime::moment(kFridayNoon);
    dated.absoluteAlarms = {noon - 600, noon + 60};
    update("x", "2026-03-30 12:00"); // the clocks have skipped an hour by then
    EXPECT_THAT(
        *kept.reminderChange.absoluteAlarms, ElementsAre(noon - 600 + 3 * 86400 - 3600, noon + 60 + 3 * 86400 - 3600));
    kept.reminders[0].due.reset();
    EXPECT_EQ(update("x", "2026-03-30"), "OK \"x\" due (none) -> 2026-03-30 (list \"Work\")");
    EXPECT_FALSE(kept.reminderChange.absoluteAlarms);
}

TEST_F(Reminders, GoWithEveryListOfATitle)
{
    add(0, "a");
    add(2, "b", true);
    EXPECT_EQ(service.listCount("Work"), 2);
    EXPECT_EQ(service.deleteList("Work"), "OK deleted list \"Work\" (2 lists shared that name)");
    EXPECT_EQ(service.deleteList("home"), "OK deleted list \"home\"");
    EXPECT_EQ(outcome([&] { return service.deleteList("Home"); }), "error: no Reminders list named \"Home\".");
    EXPECT_THAT(
        kept.done, ElementsAre("open", "open", "remove 1", "remove 3", "commit", "open", "remove 2", "commit", "open"));
}

TEST_F(Reminders, AreClearedWhenCompleted)
{
    add(0, "a", true);
    add(0, "b");
    add(1, "c", true);
    EXPECT_EQ(service.completedCount(""), 2);
    EXPECT_EQ(service.completedCount("Work"), 1);
    EXPECT_EQ(service.clearCompleted(""), "OK deleted 2 completed reminder(s) from all lists");
    EXPECT_EQ(service.clearCompleted("home"), "OK deleted 1 completed reminder(s) from list \"home\"");
    EXPECT_THAT(
        kept.done, ElementsAre("open", "open", "open", "remove 0", "remove 2", "commit", "open", "remove 2", "commit"));
}

TEST_F(Reminders, PassOnWhyTheStoreFailedAndCountNothingThen)
{
    add(0, "a", true);
    kept.failedCommit = "The folder cannot be written to.";
    EXPECT_EQ(outcome([&] { return service.clearCompleted(""); }), "error: The folder cannot be written to.");
    EXPECT_EQ(outcome([&] { return service.deleteList("Work"); }), "error: The folder cannot be written to.");
    EXPECT_EQ(service.listCount("Nope") + service.completedCount("Nope"), 0);
    kept.authorization = Authorization::denied;
    EXPECT_EQ(service.listCount("Work") + service.completedCount(""), 0);
}

} // namespace
} // namespace mervo
