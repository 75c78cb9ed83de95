#include "core/tools/LocalTime.h"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <time.h>

namespace mervo {
namespace {

class LocalClock : public testing::Test {
protected:
    void SetUp() override { in("Europe/Paris"); }
    void TearDown() override { in("UTC"); }
    static void in(const char* zone)
    {
        ::setenv("TZ", zone, 1);
        ::tzset();
    }
};

std::int64_t at(int year, int month, int day, int hour, int minute = 0)
{
    return LocalTime::moment(
        {.year = year, .month = month, .day = day, .time = platform::TimeOfDay{.hour = hour, .minute = minute}});
}

TEST_F(LocalClock, KeepsTheTimeOfDayOverChangesOfTheClocks)
{
    EXPECT_EQ(LocalTime::daysLater(at(2026, 3, 28, 9), 7), at(2026, 4, 4, 9));
    EXPECT_EQ(at(2026, 4, 4, 9) - at(2026, 3, 28, 9), 7 * 86400 - 3600);
    EXPECT_EQ(LocalTime::daysLater(at(2026, 11, 1, 9), -14), at(2026, 10, 18, 9));
    EXPECT_EQ(LocalTime::minute(LocalTime::daysLater(at(2026, 1, 31, 23, 59), 30)), "2026-03-02 23:59");
}

TEST_F(LocalClock, SkippedTimesAreLaterAndOfRepeatedOnesTheFirstIsMeant)
{
    EXPECT_EQ(LocalTime::minute(LocalTime::daysLater(at(2026, 3, 28, 2, 30), 1)), "2026-03-29 03:30");
    EXPECT_EQ(at(2026, 10, 25, 3) - LocalTime::daysLater(at(2026, 10, 24, 2, 30), 1), 5400);
    in("America/Havana"); // its clocks change at midnight
    EXPECT_EQ(LocalTime::minute(LocalTime::moment({.year = 2026, .month = 3, .day = 8})), "2026-03-08 01:00");
}

TEST_F(LocalClock, HasABoundForAnyNumberOfDays)
{
    EXPECT_EQ(LocalTime::day(LocalTime::daysLater(at(2026, 11, 23, 12), INT64_MAX)), "9966-10-29");
    EXPECT_LT(LocalTime::daysLater(at(2026, 11, 23, 12), INT64_MIN), at(1, 1, 1, 0));
}

} // namespace
} // namespace mervo
