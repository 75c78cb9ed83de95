#include "platform/jobs/Timetable.h"
#include "platform/jobs/CalendarTime.h"

#include <cstdlib>
#include <ctime>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace mervo::jobs {
namespace {

using namespace std::chrono;
using namespace std::chrono_literals;

/// 2026-03-02, a Monday, at 0:00 UTC.
constexpr WallTime kMidnight = sys_days(2026y / March / 2);

/// The two clocks, moved by hand.
struct Clocks {
    Moment now{kMidnight, 1000s};

    void pass(nanoseconds time) { now.wall += time, now.elapsed += time; }
    void set(nanoseconds change) { now.wall += change; }
};

Calendar at(std::vector<CalendarTime> times, const char* zone = "UTC")
{
    ::setenv("TZ", zone, 1);
    ::tzset();
    return calendarOf(std::move(times));
}

/// What happens to the clocks: time passes, or one of them is set. The machine asleep is time that passes unseen.
struct Step {
    enum { passes, isSet } kind;
    seconds by;
    std::size_t runs; ///< at the next look
};

TEST(Timetable, runsOnceWhateverTheClockDoes)
{
    struct Case {
        const char* name;
        bool isCalendar; ///< daily at 8:00, 9:00 and 10:00, else hourly
        std::vector<Step> steps; ///< from 0:00
    };
    const Case cases[] = {
        {"as the clock goes", true,
            {{Step::passes, 8h - 1s, 0}, {Step::passes, 1s, 1}, {Step::passes, 1s, 0}, {Step::passes, 1h, 1}}},
        {"asleep over one time", true, {{Step::passes, 8h + 30min, 1}, {Step::passes, 30min, 1}}},
        {"asleep over all of them", true, {{Step::passes, 11h, 1}, {Step::passes, 20h, 0}, {Step::passes, 1h, 1}}},
        {"set forward over one", true, {{Step::isSet, 8h + 1min, 1}, {Step::passes, 1h, 1}}},
        {"set forward between two", true, {{Step::isSet, 7h, 0}, {Step::passes, 1h, 1}}},
        {"set back by less than a second behind a run", true,
            {{Step::passes, 8h, 1}, {Step::isSet, -1s, 0}, {Step::passes, 2s, 0}, {Step::passes, 1h, 1}}},
        {"set back by an hour behind a run", true,
            {{Step::passes, 8h, 1}, {Step::isSet, -1h, 0}, {Step::passes, 1h + 1s, 0}, {Step::passes, 1h, 1}}},
        {"set back by two hours behind two runs", true,
            {{Step::passes, 8h, 1}, {Step::passes, 1h, 1}, {Step::isSet, -2h, 0}, {Step::passes, 1h, 0},
                {Step::passes, 1h, 0}, {Step::passes, 1h, 1}}},
        {"wrong by a day, corrected", true,
            {{Step::passes, 7h, 0}, {Step::isSet, 24h, 1}, {Step::passes, 1s, 0}, {Step::isSet, -24h, 0},
                {Step::passes, 1h, 1}, {Step::passes, 1h, 1}}},
        {"set back before anything ran", true,
            {{Step::isSet, -26h, 0}, {Step::passes, 9h + 59min, 0}, {Step::passes, 1min, 1}}},
        {"an interval as the clock goes", false,
            {{Step::passes, 1h - 1s, 0}, {Step::passes, 1s, 1}, {Step::passes, 59min, 0}, {Step::passes, 1min, 1}}},
        {"an interval, the clock set forward", false, {{Step::isSet, 5h, 0}, {Step::passes, 1h, 1}}},
        {"an interval, the clock set back", false, {{Step::isSet, -5h, 0}, {Step::passes, 1h, 1}}},
        {"an interval, asleep over three", false,
            {{Step::passes, 3h + 1min, 1}, {Step::passes, 58min, 0}, {Step::passes, 1min, 1}}},
    };
    for (const Case& c : cases) {
        Clocks clocks;
        Timetable timetable;
        if (c.isCalendar) {
            timetable.add(
                "job", at({{.minute = 0, .hour = 8}, {.minute = 0, .hour = 9}, {.minute = 0, .hour = 10}}), clocks.now);
        } else {
            timetable.add("job", 1h, clocks.now.wall, clocks.now);
        }
        for (std::size_t index = 0; index < c.steps.size(); ++index) {
            const Step& step = c.steps[index];
            step.kind == Step::passes ? clocks.pass(step.by) : clocks.set(step.by);
            // Asked more than once: what was given out is not due again.
            const std::size_t runs = timetable.takeDue(clocks.now).size();
            EXPECT_EQ(runs + timetable.takeDue(clocks.now).size(), step.runs) << c.name << ", step " << index;
        }
    }
}

TEST(Timetable, sleepsUntilTheNextTime)
{
    Clocks clocks;
    Timetable timetable;
    EXPECT_FALSE(timetable.next(clocks.now));
    timetable.add("daily", at({{.minute = 30, .hour = 8}}), clocks.now);
    EXPECT_EQ(timetable.next(clocks.now), kMidnight + 8h + 30min);
    timetable.add("often", 10min, kMidnight - 25min, clocks.now); // goes on where an earlier runner was
    EXPECT_EQ(timetable.next(clocks.now), kMidnight + 5min);
    clocks.set(-2h);
    EXPECT_EQ(timetable.next(clocks.now), kMidnight - 2h + 5min) << "by the wall's new time";
    timetable.remove("often");
    EXPECT_EQ(timetable.next(clocks.now), kMidnight + 8h + 30min);
    clocks.pass(2h);
    timetable.add("future", 1h, kMidnight + 40h, clocks.now);
    EXPECT_EQ(timetable.next(clocks.now), kMidnight + 1h) << "loaded, as it seems, in the future";
}

TEST(Timetable, aJobWithBothKindsOfTimesRunsOnceWhenBothAreDue)
{
    Clocks clocks;
    Timetable timetable;
    timetable.add("job", 1h, kMidnight, clocks.now);
    timetable.add("job", at({{.minute = 0, .hour = 1}}), clocks.now);
    clocks.pass(1h);
    EXPECT_EQ(timetable.takeDue(clocks.now), std::vector<std::string>{"job"});
}

TEST(Calendar, comesWhenAllThatIsSaidAgrees)
{
    struct Case {
        const char* name;
        std::vector<CalendarTime> times;
        const char* zone;
        WallTime after;
        std::optional<WallTime> next;
    };
    const auto date = [](int year_, unsigned month_, unsigned day_) {
        return WallTime(sys_days(year(year_) / month(month_) / day(day_)));
    };
    const Case cases[] = {
        {"every minute", {{}}, "UTC", kMidnight + 90s, kMidnight + 2min},
        {"hourly", {{.minute = 5}}, "UTC", kMidnight + 5min, kMidnight + 1h + 5min},
        {"every minute of an hour", {{.hour = 3}}, "UTC", kMidnight + 3h + 59min, kMidnight + 27h},
        {"Sundays, as 0", {{.minute = 0, .hour = 9, .weekday = 0}}, "UTC", kMidnight, date(2026, 3, 8) + 9h},
        {"Sundays, as 7", {{.minute = 0, .hour = 9, .weekday = 7}}, "UTC", kMidnight, date(2026, 3, 8) + 9h},
        {"the 6th or a Wednesday", {{.minute = 0, .hour = 9, .day = 6, .weekday = 3}}, "UTC", date(2026, 3, 4) + 9h,
            date(2026, 3, 6) + 9h},
        {"29 February", {{.minute = 0, .hour = 0, .day = 29, .month = 2}}, "UTC", date(2096, 3, 1), date(2104, 2, 29)},
        {"31 June", {{.minute = 0, .hour = 0, .day = 31, .month = 6}}, "UTC", kMidnight, std::nullopt},
        {"the hour that spring skips", {{.minute = 30, .hour = 2}}, "Europe/Paris", date(2026, 3, 28) + 20h,
            date(2026, 3, 29) + 1h},
        {"and on the day after", {{.minute = 30, .hour = 2}}, "Europe/Paris", date(2026, 3, 29) + 1h,
            date(2026, 3, 30) + 30min},
        {"the hour that autumn doubles", {{.minute = 30, .hour = 2}}, "Europe/Paris", date(2026, 10, 25) + 30min,
            date(2026, 10, 26) + 1h + 30min},
    };
    for (const Case& c : cases)
        EXPECT_EQ(at(c.times, c.zone)(c.after), c.next) << c.name;
}

} // namespace
} // namespace mervo::jobs
