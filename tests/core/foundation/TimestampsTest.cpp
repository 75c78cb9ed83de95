#include "core/foundation/Timestamps.h"

#include <gtest/gtest.h>

namespace mervo {
namespace {

using namespace std::chrono;

TEST(Timestamps, textAndTimeAreOne)
{
    const std::pair<std::int64_t, const char*> cases[]{{0, "1970-01-01T00:00:00Z"}, {-1, "1969-12-31T23:59:59Z"},
        {1772352942, "2026-03-01T08:15:42Z"}, {951782400, "2000-02-29T00:00:00Z"},
        {4107542399, "2100-02-28T23:59:59Z"}};
    for (const auto& [epoch, text] : cases) {
        const system_clock::time_point time{seconds(epoch)};
        EXPECT_EQ(Timestamps::string(time), text);
        EXPECT_EQ(Timestamps::string(time + milliseconds(999)), text) << "whole seconds, rounded down";
        EXPECT_EQ(Timestamps::date(text), time) << text;
    }
    const std::string now = Timestamps::now();
    EXPECT_LE(abs(system_clock::now() - Timestamps::date(now).value()), seconds(2));
}

TEST(Timestamps, otherFormsAreNoTime)
{
    const char* cases[]{"", "2026-03-01", "2026-03-01T08:15:42", "2026-03-01T08:15:42+01:00", "2026-03-01t08:15:42z",
        "2026-03-01 08:15:42Z", "2026-03-01T08:15:42.5Z", " 2026-03-01T08:15:42Z", "2026-03-01T08:15:42Z\n",
        "2026-3-01T08:15:42Z", "2026-13-01T08:15:42Z", "2026-00-01T08:15:42Z", "2025-02-29T00:00:00Z",
        "2100-02-29T00:00:00Z", "2026-04-31T00:00:00Z", "2026-03-01T24:00:00Z", "2026-03-01T08:60:42Z",
        "2026-03-01T08:15:60Z", "+026-03-01T08:15:42Z", "2026-03-01T-8:15:42Z"};
    for (const char* text : cases)
        EXPECT_FALSE(Timestamps::date(text)) << text;
}

TEST(Timestamps, timesBeyondTheClockStayOrdered)
{
    EXPECT_GT(Timestamps::date("9999-12-31T23:59:59Z"), Timestamps::date("2262-01-01T00:00:00Z"));
    EXPECT_LT(Timestamps::date("0000-01-01T00:00:00Z"), Timestamps::date("1678-01-01T00:00:00Z"));
}

} // namespace
} // namespace mervo
