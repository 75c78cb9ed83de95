#include "platform/schedule/Schedule.h"
#include "platform/desk/recurrence/Zone.h"

#include <gtest/gtest.h>
#include <set>
#include <stdlib.h>

namespace mervo::platform {
namespace {

using namespace std::chrono;

const char* const kZones[] = {"Europe/Berlin", "America/New_York", "Australia/Lord_Howe", "Pacific/Apia"};

/// Read by the desk, whose zones are compared with another library's; the variable TZ has no part in it.
OffsetAt offsetIn(const std::string& zone)
{
    return [zone = desk::Zone::find(zone)](
               Moment moment) { return seconds(zone->offsetAt(moment.time_since_epoch().count()).seconds); };
}

Moment utc(year_month_day day, minutes time)
{
    return sys_days(day) + time;
}

/// Steps through the minutes with a clock in the hand: a time that is shown, or jumped over, is due if it was not yet
/// due on its day.
std::vector<Moment> bySteps(const std::vector<DailyTime>& times, Moment after, Moment until, const OffsetAt& offsetAt)
{
    std::set<minutes> due; // on the clock, since 1970
    std::vector<Moment> runs;
    const auto wallOf = [&](Moment at) { return floor<minutes>((at + offsetAt(at)).time_since_epoch()); };
    minutes shown = wallOf(after) - 24h;
    for (Moment now = after - 24h; now <= until; now += 1min) {
        bool isDue = false;
        const minutes wall = wallOf(now);
        while (shown < wall) {
            shown += 1min;
            const minutes time = shown - floor<days>(shown);
            for (const DailyTime& wanted : times)
                isDue = (hours(wanted.hour) + minutes(wanted.minute) == time && due.insert(shown).second) || isDue;
        }
        if (isDue && now > after)
            runs.push_back(now);
    }
    return runs;
}

TEST(Schedules, runAsAClockIsReadOverTenYears)
{
    const std::vector<DailyTime> times[] = {
        {{2, 0}, {2, 10}, {2, 30}, {2, 59}, {3, 0}}, {{1, 45}, {1, 45}, {23, 59}, {0, 0}, {0, 15}, {24, 0}, {0, 1440}}};
    for (const char* name : kZones) {
        const auto offsetAt = offsetIn(name);
        for (const auto& each : times) {
            const Moment from = utc(2010y / 12 / 31, 0min), to = utc(2020y / 12 / 31, 0min);
            const auto runs = runsBetween(each, from, to, offsetAt);
            ASSERT_EQ(runs, bySteps(each, from, to, offsetAt)) << name << " " << each.front().minute;
            for (std::size_t i = 0; i + 1 < runs.size(); i += 97) {
                EXPECT_EQ(nextRun(each, runs[i + 1] - 1s, offsetAt), runs[i + 1]);
                EXPECT_EQ(lastRun(each, runs[i + 1] - 1s, offsetAt), runs[i]);
                EXPECT_EQ(lastRun(each, runs[i], offsetAt), runs[i]);
            }
        }
    }
}

TEST(Schedules, passAChangeOfTheClockOnce)
{
    const struct {
        const char* zone;
        DailyTime time;
        Moment after, next;
    } cases[] = {{"Europe/Berlin", {2, 30}, utc(2026y / 3 / 28, 12h), utc(2026y / 3 / 29, 1h)},
        {"Europe/Berlin", {2, 30}, utc(2026y / 10 / 24, 12h), utc(2026y / 10 / 25, 30min)},
        {"Europe/Berlin", {2, 30}, utc(2026y / 10 / 25, 30min), utc(2026y / 10 / 26, 90min)},
        {"America/New_York", {2, 0}, utc(2026y / 3 / 8, 0min), utc(2026y / 3 / 8, 7h)},
        {"America/New_York", {1, 0}, utc(2026y / 11 / 1, 5h), utc(2026y / 11 / 2, 6h)},
        {"Australia/Lord_Howe", {2, 15}, utc(2026y / 10 / 3, 0min), utc(2026y / 10 / 3, 15h + 30min)},
        {"Australia/Lord_Howe", {1, 45}, utc(2026y / 4 / 4, 0min), utc(2026y / 4 / 4, 14h + 45min)}};
    for (const auto& [zone, time, after, next] : cases)
        EXPECT_EQ(nextRun({time}, after, offsetIn(zone)), next) << zone << " " << next.time_since_epoch().count();
    EXPECT_EQ(nextRun({}, {}, offsetIn("UTC")), std::nullopt);
    EXPECT_EQ(lastRun({{24, 0}}, {}, offsetIn("UTC")), std::nullopt);
}

TEST(Schedules, countIntervalsFromTheLoading)
{
    const Moment since = utc(2026y / 1 / 1, 0min);
    EXPECT_EQ(nextRun(since, 60s, since - 1h), since + 60s);
    EXPECT_EQ(nextRun(since, 60s, since), since + 60s);
    EXPECT_EQ(nextRun(since, 60s, since + 59s), since + 60s);
    EXPECT_EQ(nextRun(since, 60s, since + 60s), since + 120s);
    EXPECT_EQ(nextRun(since, 0s, since), since + 1s);
}

TEST(Schedules, readTheMachinesZone)
{
    for (const char* name : kZones) {
        setenv("TZ", name, 1);
        const auto local = localOffset(), expected = offsetIn(name);
        for (Moment at = utc(2026y / 1 / 1, 0min); at < utc(2027y / 1 / 1, 0min); at += 5h)
            ASSERT_EQ(local(at), expected(at)) << name;
    }
    unsetenv("TZ");
}

} // namespace
} // namespace mervo::platform
