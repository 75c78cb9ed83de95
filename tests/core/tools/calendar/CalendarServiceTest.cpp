#include "core/tools/calendar/CalendarService.h"

#include "core/tools/LocalTime.h"
#include "core/tools/calendar/UriSyntax.h"
#include "tests/core/tools/calendar/MemoryStore.h"

#include <gmock/gmock.h>
#include <stdlib.h>
#include <time.h>

namespace mervo {
namespace {

using platform::Authorization;
using platform::Event;
using test::outcome;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr std::int64_t kNow = 1774598400; // 2026-03-27 09:00 in Paris, two days before the clocks change
constexpr std::int64_t kHour = 3600;

class Calendars : public testing::Test {
protected:
    test::MemoryStore kept;

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

    Event& add(const std::string& title, std::int64_t start, const std::string& calendar = "Home")
    {
        Event event{.item = std::to_string(kept.events.size()), .title = title, .start = start};
        event.calendar.title = calendar;
        return kept.events.emplace_back(event);
    }
    CalendarService service() { return {kept.opener(), kNow}; }
    std::string find(std::int64_t days, const std::string& contains = {})
    {
        return outcome([&] { return service().find(days, contains); });
    }
    std::string update(const std::string& contains, const CalendarService::Fields& fields)
    {
        return outcome([&] { return service().update(contains, 14, fields); });
    }
    std::string remove(const std::string& contains)
    {
        return outcome([&] { return service().remove(contains, 14); });
    }
};

TEST_F(Calendars, AreAskedForAccess)
{
    struct Case {
        Authorization status;
        bool isGranted;
        const char* failed;
        const char* said;
        bool isAsked;
    };
    const std::string none = "(no events in the next 7 day(s))";
    const std::string denied =
        "error: Calendars access not granted. Allow it in System Settings → Privacy & Security → "
        "Calendars, then retry.";
    const std::string restricted = "error: Calendars access is restricted by a system policy (MDM/parental controls).";
    const Case cases[]{
        {Authorization::fullAccess, false, "", none.c_str(), false},
        {Authorization::restricted, true, "", restricted.c_str(), false},
        {Authorization::denied, true, "", denied.c_str(), false},
        {Authorization::notDetermined, true, "", none.c_str(), true},
        {Authorization::notDetermined, false, "", denied.c_str(), true},
        {Authorization::writeOnly, true, "", none.c_str(), true},
        {Authorization::writeOnly, false, "", denied.c_str(), true},
        {Authorization::notDetermined, true, "nobody answers.",
            "error: EventKit access request failed: nobody answers.", true},
    };
    for (const Case& each : cases) {
        kept = {.authorization = each.status, .isGranted = each.isGranted, .failedRequest = each.failed};
        EXPECT_EQ(find(7), each.said);
        EXPECT_EQ(kept.done.size(), each.isAsked ? 2 : 1);
    }
}

TEST_F(Calendars, LookFromNowOverSoManyDaysOfTheCalendar)
{
    const auto span = [&](std::int64_t days) {
        find(days);
        return std::pair((kept.span.start - kNow) / kHour, (kept.span.end - kNow) / kHour);
    };
    EXPECT_EQ(span(7), std::pair(0L, 7 * 24L - 1)); // the clocks skip an hour within
    EXPECT_EQ(span(-7), std::pair(-7 * 24L, 0L));
    EXPECT_EQ(span(0), std::pair(0L, 0L));
}

TEST_F(Calendars, SayThatThereIsNothing)
{
    EXPECT_EQ(find(7), "(no events in the next 7 day(s))");
    EXPECT_EQ(find(-1, "tea"), "(no events in the past 1 day(s) matching \"tea\")");
    EXPECT_EQ(find(0), "(no events in the next 0 day(s))");
    EXPECT_EQ(find(INT64_MIN), "(no events in the past 9223372036854775808 day(s))");
    add("coffee", kNow);
    EXPECT_EQ(find(7, "tea"), "(no events in the next 7 day(s) matching \"tea\")");
}

TEST_F(Calendars, ListEventsByStartCalendarAndTitle)
{
    add("b", kNow + kHour);
    add("a", kNow + kHour, "Work");
    add("a", kNow + kHour);
    Event& all = add("Ferien\r\nin\u2028Été", LocalTime::moment({.year = 2026, .month = 3, .day = 27}), "");
    all.isAllDay = true;
    all.location = "Lac\nd'Annecy";
    all.url = "https://x.example/1";
    add("", kNow + 2 * kHour).url = "message://%3C1@x%3E";
    EXPECT_EQ(find(7),
        "2026-03-27 (all-day) || ? || Ferien in Été @ Lac d'Annecy 🔗 https://x.example/1\n"
        "2026-03-27 10:00 || Home || a\n"
        "2026-03-27 10:00 || Home || b\n"
        "2026-03-27 10:00 || Work || a\n"
        "2026-03-27 11:00 || Home || (untitled) 🔗 message://%3C1@x%3E");
    EXPECT_EQ(find(7, "ÉTÉ").substr(0, 20), "2026-03-27 (all-day)");
    EXPECT_EQ(find(7, "annecy"), "(no events in the next 7 day(s) matching \"annecy\")");
}

TEST_F(Calendars, RefuseWhatMeansNoEventOrSeveral)
{
    add("Lunch with Ann", kNow + kHour, "Work");
    add("lunch", kNow);
    const std::string several = "error: ambiguous: 2 events match - refine `contains`:\n"
                                "  lunch (Home)\n"
                                "  Lunch with Ann (Work)";
    EXPECT_EQ(remove("LUNCH"), several);
    EXPECT_EQ(update("lunch", {.title = "x"}), several);
    const std::string none = "error: no event in range matching \"dinner\" - nothing to update.";
    EXPECT_EQ(remove("dinner"), none);
    EXPECT_EQ(update("dinner", {.title = "x"}), none);
    EXPECT_THAT(kept.done, ElementsAre("open", "open", "open", "open"));
}

TEST_F(Calendars, AreNotOpenedWhenNothingIsToChange)
{
    EXPECT_EQ(update("x", {}), "error: no change requested (pass at least one of title / location / notes / url).");
    EXPECT_THAT(kept.done, IsEmpty());
}

TEST_F(Calendars, ChangeWhatIsGivenAndNothingElse)
{
    add("", kNow);
    kept.events[0].url = "https://old.example";
    EXPECT_EQ(update("", {.location = "Room\n4"}),
        "OK updated [(untitled) @ -] → title=\"\" location=\"Room 4\" url=\"https://old.example\"");
    EXPECT_EQ(kept.eventChange.location, "Room\n4");
    EXPECT_FALSE(kept.eventChange.title || kept.eventChange.notes || kept.eventChange.url);
    EXPECT_EQ(update("", {.title = "T", .notes = "N", .url = "message://%3Ca@b%3E"}),
        "OK updated [(untitled) @ -] → title=\"T\" location=\"\" url=\"message://%3Ca@b%3E\"");
    EXPECT_EQ(kept.eventChange.notes, "N");
    EXPECT_THAT(kept.done, ElementsAre("open", "change 0", "commit", "open", "change 0", "commit"));
}

TEST_F(Calendars, LeaveOutAnUrlThatIsNone)
{
    add("Tea", kNow).location = "Kew";
    EXPECT_EQ(update("tea", {.url = "no url"}), "OK updated [Tea @ Kew] → title=\"Tea\" location=\"Kew\"");
    EXPECT_THAT(kept.done, ElementsAre("open"));
    EXPECT_EQ(update("tea", {.title = "T", .url = "%"}), "OK updated [Tea @ Kew] → title=\"T\" location=\"Kew\"");
    EXPECT_FALSE(kept.eventChange.url);
}

TEST_F(Calendars, DeleteTheOnlyMatch)
{
    add("Tea", kNow);
    EXPECT_EQ(remove("ea"), "OK deleted [Tea @ -]");
    EXPECT_THAT(kept.done, ElementsAre("open", "remove 0", "commit"));
}

TEST_F(Calendars, PassOnWhyTheStoreFailed)
{
    add("Tea", kNow);
    kept.failedCommit = "The disk is full.";
    EXPECT_EQ(remove("tea"), "error: The disk is full.");
    EXPECT_EQ(update("tea", {.title = "T"}), "error: The disk is full.");
}

TEST(UriSyntax, FollowsTheGrammar)
{
    for (const char* allowed :
        {"https://x.example/a?b=c#d", "message://%3Ca+b/c@x.example%3E", "file:///home/a%20b", "tel:+33-6",
            "http://[::1]:80/", "http://u:p@h:/", "www.example.com/a:b", "//h", "/a//b", "?q", "#f", "a:"})
        EXPECT_TRUE(isUriReference(allowed)) << allowed;
    for (const char* refused : {"a b", "https://x/\n", "%", "%4", "%zz", "<a@b>", "http://a]b/", "http://h:8x/", "1a:b",
             ":a", "a#b#c", "https://x/é", "a\\b", "http://[::1", "a|b", "\"a\""})
        EXPECT_FALSE(isUriReference(refused)) << refused;
}

} // namespace
} // namespace mervo
