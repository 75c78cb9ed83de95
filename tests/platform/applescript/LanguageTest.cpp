#include "tests/platform/applescript/ScriptCases.h"
#include "tests/platform/applescript/ToyPost.h"

#include <ctime>
#include <gtest/gtest.h>

namespace {

using namespace mervo::test;

TEST(Language, answers)
{
    for (const char* file : {"syntax", "values", "text-rules", "text-elements", "lists", "statements"}) {
        for (const auto& [script, expected] : scriptCases(file))
            EXPECT_EQ(runAlone(script), expected) << script;
    }
}

TEST(Language, localTimeHasNoZone)
{
    ::setenv("TZ", "Europe/Paris", 1);
    ::tzset();
    using mervo::applescript::Date;
    // The clocks go forward at 01:00 UTC on 2024-03-31, back on 2024-10-27.
    EXPECT_EQ(Date::fromUnix(1711846799), Date::fromParts(2024, 3, 31, 3600 + 3599));
    EXPECT_EQ(Date::fromUnix(1711846800), Date::fromParts(2024, 3, 31, 3 * 3600));
    EXPECT_EQ(Date::fromParts(2024, 3, 31, 3 * 3600).toUnix(), 1711846800);
    EXPECT_EQ(Date::fromUnix(1729990800), Date::fromParts(2024, 10, 27, 2 * 3600));
    for (std::int64_t moment = 1700000000; moment < 1740000000; moment += 99991) {
        if (moment / 86400 != 1729990800 / 86400) { // one hour of that day is there twice
            EXPECT_EQ(Date::fromUnix(moment).toUnix(), moment);
        }
    }
    ::setenv("TZ", "UTC", 1);
    ::tzset();
    EXPECT_EQ(Date::fromParts(1900, 2, 29), Date::fromParts(1900, 3, 1));
    EXPECT_EQ(mervo::applescript::DateParts(Date::fromParts(-4, 2, 29)).day, 29);
}

} // namespace
