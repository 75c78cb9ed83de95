#include "cockpit/model/shown/RelativeTime.h"
#include "cockpit/model/shown/ShownText.h"

#include <gtest/gtest.h>

#include <utility>

namespace mervo {
namespace {

TEST(ShownTexts, showWhatIsHiddenAndCountWhatIsLeftOut)
{
    EXPECT_EQ(ShownText::line("a\nb\r\n\u202E\rc<b>"), QString::fromUtf8("a↵b↵<U+202E><U+000D>c<b>"));
    EXPECT_EQ(ShownText::block("a\nb\x1b[0m"), QString("a\nb<U+001B>[0m"));
    EXPECT_EQ(ShownText::line("ééé", 2), QString::fromUtf8("éé... (1 more character)"));
    EXPECT_EQ(ShownText::line("ééé", 3), QString::fromUtf8("ééé"));
    const auto cut = ShownText::cut("x" + std::string(100'000, '\xcc'), 2);
    EXPECT_EQ(cut.shown, QString("x<0xCC>"));
    EXPECT_EQ(cut.leftOut, 99'999U);
}

TEST(RelativeTimes, useTheLargestUnit)
{
    const auto now = *Timestamps::date("2026-03-01T12:00:00Z");
    const std::pair<const char*, const char*> cases[] = {{"2026-03-01T12:00:00Z", "0 seconds ago"},
        {"2026-03-01T11:59:59Z", "1 second ago"}, {"2026-03-01T11:59:00Z", "1 minute ago"},
        {"2026-03-01T11:00:01Z", "59 minutes ago"}, {"2026-02-28T13:00:00Z", "23 hours ago"},
        {"2026-02-23T12:00:00Z", "6 days ago"}, {"2026-02-15T12:00:00Z", "2 weeks ago"},
        {"2025-12-01T12:00:00Z", "3 months ago"}, {"2024-01-01T00:00:00Z", "2 years ago"},
        {"2026-03-01T14:00:00Z", "in 2 hours"}, {"yesterday", ""}, {"", ""}};
    for (const auto& [then, text] : cases)
        EXPECT_EQ(RelativeTime::text(then, now), text) << then;
}

} // namespace
} // namespace mervo
