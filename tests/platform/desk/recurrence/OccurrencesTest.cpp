#include "platform/desk/recurrence/Recurrences.h"
#include "platform/desk/recurrence/Zone.h"
#include "platform/desk/recurrence/ZoneText.h"

#include <chrono>
#include <cstdlib>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace mervo::desk {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr platform::TimeSpan kYear{1767225600, 1798761600}; // 2026

std::string calendar(const std::string& lines)
{
    return "BEGIN:VCALENDAR\r\n" + lines + "END:VCALENDAR\r\n";
}

std::string event(const std::string& lines)
{
    return "BEGIN:VEVENT\r\nUID:1\r\n" + lines + "\r\nEND:VEVENT\r\n";
}

/// "2026-03-29 00:30+60 [key] 0": start in UTC, minutes, key, component.
std::vector<std::string> shown(const std::string& text, platform::TimeSpan span = kYear)
{
    std::vector<std::string> rows;
    for (const Occurrence& one : occurrences(text, span).all) {
        rows.push_back(dateTimeText(one.start) + "+" + std::to_string((one.end - one.start) / 60) + " [" + one.key
            + "] " + std::to_string(one.component));
    }
    return rows;
}

/// The owner's zone for the time of a test.
class Recurrence : public testing::Test {
protected:
    void SetUp() override { setenv("TZ", "Europe/Paris", 1); }
    void TearDown() override { unsetenv("TZ"); }
};

TEST_F(Recurrence, readsTimesInEveryForm)
{
    const std::string own = "BEGIN:VTIMEZONE\r\nTZID:Office\r\nBEGIN:STANDARD\r\nDTSTART:19701101T020000\r\n"
                            "RRULE:FREQ=YEARLY;BYMONTH=11;BYDAY=1SU\r\nTZOFFSETFROM:-0400\r\nTZOFFSETTO:-0500\r\n"
                            "END:STANDARD\r\nBEGIN:DAYLIGHT\r\nDTSTART:19700308T020000\r\n"
                            "RRULE:FREQ=YEARLY;BYMONTH=3;BYDAY=2SU\r\nTZOFFSETFROM:-0500\r\nTZOFFSETTO:-0400\r\n"
                            "END:DAYLIGHT\r\nEND:VTIMEZONE\r\n";
    const std::pair<const char*, const char*> cases[] = {
        {"DTSTART:20260105T090000Z\r\nDTEND:20260105T100000Z", "20260105T090000+60 [] 0"},
        {"DTSTART:20260105T090000", "20260105T080000+0 [] 0"}, // floats
        {"DTSTART;TZID=Asia/Tokyo:20260105T090000\r\nDURATION:PT90M", "20260105T000000+90 [] 0"},
        {"DTSTART;TZID=\"Office\":20260105T090000", "20260105T140000+0 [] 0"},
        {"DTSTART;TZID=Office:20260705T090000", "20260705T130000+0 [] 0"},
        {"DTSTART;TZID=/freeassociation.sourceforge.net/Asia/Tokyo:20260105T090000", "20260105T000000+0 [] 0"},
        {"DTSTART;TZID=Nowhere/At all:20260105T090000", "20260105T080000+0 [] 0"}, // floats
        {"DTSTART;TZID=../../../etc/passwd:20260105T090000", "20260105T080000+0 [] 0"},
        {"DTSTART;VALUE=DATE:20260105", "20260104T230000+1440 [] 0"},
        {"DTSTART;VALUE=DATE:20260329\r\nDTEND;VALUE=DATE:20260331", "20260328T230000+2820 [] 0"}, // a day of 23 hours
        {"DTSTART;VALUE=DATE:20260105\r\nDTEND;VALUE=DATE:20260101", "20260104T230000+1440 [] 0"},
        {"DTSTART:20260105T090000Z\r\nDTEND:20260104T090000Z", "20260105T090000+0 [] 0"},
        {"DTSTART:20260105T090000Z\r\nDTEND;TZID=Asia/Tokyo:20260105T190000", "20260105T090000+60 [] 0"},
        {"DTSTART;TZID=Europe/Paris:20260329T023000\r\nDURATION:PT1H", "20260329T013000+60 [] 0"}, // in the gap
        {"DTSTART;TZID=Europe/Paris:20261025T023000\r\nDURATION:PT1H", "20261025T003000+60 [] 0"}, // the first of two
        {"DTSTART;TZID=Europe/Paris:20260328T120000\r\nDURATION:P1D", "20260328T110000+1380 [] 0"}, // on the clock
        {"DTSTART;TZID=Europe/Paris:20260328T120000\r\nDURATION:PT24H", "20260328T110000+1440 [] 0"}, // exact
        {"DT\r\n START:20260105T090000Z", "20260105T090000+0 [] 0"},
        {"dtstart;tzid=Europe/Par\r\n is:20260105T0\r\n\t90000", "20260105T080000+0 [] 0"},
        {"DTSTART:20260105T090000Z\r\nRRULE:FREQ=SOMETIMES", "20260105T090000+0 [] 0"},
    };
    for (const auto& [lines, wanted] : cases)
        EXPECT_THAT(shown(calendar(own + event(lines))), ElementsAre(wanted)) << lines;
    for (const char* lines : {"SUMMARY:no start", "DTSTART:20260230T090000Z", "DTSTART:20260105T250000Z", "DTSTART:x"})
        EXPECT_THAT(shown(calendar(event(lines))), IsEmpty()) << lines;
}

TEST_F(Recurrence, belongsToASpanThatItOverlaps)
{
    const std::string hour = calendar(event("DTSTART:20260105T090000Z\r\nDURATION:PT1H"));
    const std::string moment = calendar(event("DTSTART:20260105T090000Z"));
    const std::int64_t start = 1767603600;
    EXPECT_EQ(shown(hour, {start + 3599, start + 9999}).size(), 1U);
    EXPECT_EQ(shown(hour, {start + 3600, start + 9999}).size(), 0U);
    EXPECT_EQ(shown(hour, {start - 9, start}).size(), 0U);
    EXPECT_EQ(shown(moment, {start, start + 1}).size(), 1U);
    EXPECT_EQ(shown(moment, {start - 1, start}).size(), 0U);
    EXPECT_EQ(shown(calendar(event("DTSTART:20200101T000000Z\r\nDURATION:P5000D")), {start, start + 1}).size(), 1U);
}

TEST_F(Recurrence, changedOccurrencesStandForTheirDates)
{
    const std::string master = event("DTSTART;TZID=Europe/Paris:20260105T090000\r\nDURATION:PT1H\r\n"
                                     "RRULE:FREQ=DAILY;COUNT=4");
    const auto change = [](const std::string& lines) { return event("DURATION:PT2H\r\n" + lines); };
    const std::string moved = change("RECURRENCE-ID:20260106T080000Z\r\nDTSTART:20260120T100000Z\r\nSEQUENCE:2");
    EXPECT_THAT(shown(calendar(master + moved)),
        ElementsAre("20260105T080000+60 [20260105T090000] 0", "20260107T080000+60 [20260107T090000] 0",
            "20260108T080000+60 [20260108T090000] 0", "20260120T100000+120 [20260106T090000] 1"));
    EXPECT_THAT(shown(calendar(moved + change("RECURRENCE-ID:20260106T080000Z\r\nDTSTART:20260121T100000Z") + master)),
        testing::Contains("20260120T100000+120 [20260106T090000] 0")); // the later version, whatever the order
    EXPECT_THAT(shown(calendar(master
                    + change("RECURRENCE-ID;RANGE=THISANDFUTURE;TZID=Europe/Paris:20260107T090000\r\n"
                             "DTSTART;TZID=Europe/Paris:20260107T140000"))),
        ElementsAre("20260105T080000+60 [20260105T090000] 0", "20260106T080000+60 [20260106T090000] 0",
            "20260107T130000+120 [20260107T090000] 1", "20260108T130000+120 [20260108T090000] 1"));
    EXPECT_THAT(shown(calendar(moved)), ElementsAre("20260120T100000+120 [20260106T080000Z] 0"));
    EXPECT_THAT(
        shown(calendar(event("DTSTART:20260105T090000Z\r\nRRULE:FREQ=DAILY;COUNT=3\r\nEXDATE;VALUE=DATE:20260106"
                             "\r\nEXDATE:20260105T090000Z\r\nRDATE;VALUE=PERIOD:20260301T100000Z/PT3H"))),
        ElementsAre("20260107T090000+0 [20260107T090000Z] 0", "20260301T100000+180 [20260301T100000Z] 0"));
}

TEST_F(Recurrence, aCacheKeepsEnough)
{
    const std::string whole = calendar("BEGIN:VTIMEZONE\r\nTZID:Own\r\nBEGIN:STANDARD\r\nDTSTART:19700101T000000\r\n"
                                       "TZOFFSETFROM:+0100\r\nTZOFFSETTO:+0300\r\nEND:STANDARD\r\nEND:VTIMEZONE\r\n"
        + event("SUMMARY:No\r\n start\r\nDESCRIPTION:" + std::string(9999, 'x'))
        + event("DTSTART;TZID=Own:20260105T090000\r\nRRULE:FREQ=WEEKLY;COUNT=30\r\nBEGIN:VALARM\r\nDTSTART:19990101\r\n"
                "END:VALARM\r\nEXDATE;TZID=Own:20260119T\r\n 090000\r\nRDATE\r\n X:20260101T090000"));
    const std::string kept = timesText(whole);
    EXPECT_EQ(shown(whole).size(), 29U);
    EXPECT_EQ(shown(kept), shown(whole));
    EXPECT_EQ(timesText(kept), kept);
    EXPECT_LT(kept.size(), 500U);
    EXPECT_EQ(firstOccurrences(kept), firstOccurrences(whole));
    EXPECT_EQ(dateLine(whole, 1, "20260105T090000"), (DateLine{{{"TZID", "Own"}}, "20260105T090000"}));
    EXPECT_EQ(dateLine(whole, 1, "20260105"), (DateLine{{{"VALUE", "DATE"}}, "20260105"}));
    EXPECT_EQ(dateLine(whole, 1, "20260105T090000Z"), (DateLine{{}, "20260105T090000Z"}));
}

TEST_F(Recurrence, aTaskGoesOnToItsNextDate)
{
    struct Case {
        const char* lines;
        std::optional<NextDate> next;
    };
    const Case cases[] = {
        {"DUE;VALUE=DATE:20260105\r\nRRULE:FREQ=WEEKLY;COUNT=2", NextDate{"", "20260112", {"FREQ=WEEKLY;COUNT=1"}}},
        {"DUE;VALUE=DATE:20260112\r\nRRULE:FREQ=WEEKLY;COUNT=1", std::nullopt},
        {"DTSTART:20260105T090000Z\r\nDUE:20260105T100000Z\r\nRRULE:COUNT=9;FREQ=DAILY\r\nEXDATE:20260106T090000Z",
            NextDate{"20260107T090000Z", "20260107T100000Z", {"COUNT=7;FREQ=DAILY"}}},
        {"DUE;TZID=Europe/Paris:20260328T090000\r\nRRULE:FREQ=DAILY", NextDate{"", "20260329T090000", {"FREQ=DAILY"}}},
        {"DUE:20260131T090000\r\nRRULE:FREQ=MONTHLY", NextDate{"", "20260331T090000", {"FREQ=MONTHLY"}}},
        {"DUE:20260131T090000\r\nRRULE:FREQ=DAILY;UNTIL=20260131T235959", std::nullopt},
        {"DUE:20260131T090000", std::nullopt},
        {"RRULE:FREQ=DAILY", std::nullopt},
    };
    for (const Case& one : cases) {
        const std::string text = calendar("BEGIN:VTODO\r\n" + std::string(one.lines) + "\r\nEND:VTODO\r\n");
        EXPECT_EQ(nextDate(text, 0), one.next) << one.lines;
    }
    EXPECT_EQ(nextDate(calendar({}), 0), std::nullopt);
}

TEST_F(Recurrence, zonesAreTheSystems)
{
    for (const char* name : {"Europe/Paris", "Australia/Lord_Howe", "America/St_Johns", "Africa/Casablanca",
             "Asia/Kolkata", "America/Sao_Paulo", "Europe/Dublin", "Pacific/Apia", "UTC"}) {
        setenv("TZ", name, 1);
        tzset();
        const auto zone = Zone::find(name);
        const std::string text =
            calendar(zoneText(name, kYear.start) + event("DTSTART:20260101T000000Z\r\nRRULE:FREQ=HOURLY;INTERVAL=7"));
        for (std::time_t moment = -2'000'000'000; moment < 4'000'000'000; moment += 1'234'567) {
            std::tm local{};
            localtime_r(&moment, &local);
            ASSERT_EQ(zone->offsetAt(moment).seconds, local.tm_gmtoff) << name << moment;
            const WallTime wall = zone->wallTimeAt(moment);
            ASSERT_EQ(zone->wallTimeAt(zone->momentOf(wall)), wall) << name << moment;
        }
        EXPECT_EQ(localZoneName(), name);
        std::string own = zoneText(name, kYear.start); // the same under a name that only the file knows
        own.replace(own.find(name), std::string_view(name).size(), "Own zone");
        for (int month = 1; month <= 12; ++month) {
            const std::string time = dateTimeText(wallTime({2029, month, 15}, 12));
            const std::string line = "DTSTART;TZID=Own zone:" + time;
            const std::int64_t wanted = zone->momentOf(wallTime({2029, month, 15}, 12));
            const auto found = firstOccurrences(calendar(own + event(line)));
            ASSERT_EQ(found.size(), 1U);
            EXPECT_EQ(found[0].start, wanted) << name << " " << time << own;
        }
    }
    EXPECT_EQ(zoneText("Nowhere/At_all", 0), "");
    EXPECT_EQ(Zone::find("../zoneinfo/UTC"), nullptr);
    setenv("TZ", "<+03>-3:30", 1);
    EXPECT_EQ(Zone::local()->offsetAt(0).seconds, 12600);
}

std::string repeated(const std::string& text, int times)
{
    std::string all;
    for (int i = 0; i < times; ++i)
        all += text;
    return all;
}

/// Each with a rule for every second of centuries, and an event in each.
std::string manyZones()
{
    std::string all;
    for (int i = 0; i < 20'000; ++i) {
        const std::string name = "a/b/c/d/e/Zone" + std::to_string(i);
        all += "BEGIN:VTIMEZONE\r\nTZID:" + name + "\r\nBEGIN:STANDARD\r\nDTSTART:16010101T000000\r\n"
            + "RRULE:FREQ=SECONDLY;BYMONTH=2;BYMONTHDAY=30\r\nTZOFFSETFROM:+0000\r\nTZOFFSETTO:+0100\r\n"
            + "END:STANDARD\r\nEND:VTIMEZONE\r\n" + event("DTSTART;TZID=" + name + ":20260101T000000");
    }
    return all;
}

TEST_F(Recurrence, hostileItemsTakeABoundedTime)
{
    struct Case {
        std::string text;
        bool isBounded;
    };
    const auto rule = [](const std::string& text) {
        return calendar(event("DTSTART:16010101T090000Z\r\nRRULE:" + text));
    };
    const Case cases[] = {
        {rule("FREQ=SECONDLY"), true},
        {rule("FREQ=SECONDLY;UNTIL=99991231T235959Z;BYSECOND=0,30"), true},
        {rule("FREQ=SECONDLY;BYMONTH=2;BYMONTHDAY=30"), false},
        {rule("FREQ=YEARLY;BYMONTH=2;BYMONTHDAY=30"), false},
        {rule("FREQ=SECONDLY;INTERVAL=7;BYSECOND=1;BYMINUTE=59;BYHOUR=23;COUNT=2000000000"), true},
        {rule("FREQ=MINUTELY;INTERVAL=99999999999999999999"), false},
        {rule("FREQ=YEARLY;BYSETPOS=366,-366;BYHOUR=0,1,2,3,4,5,6,7;BYMINUTE=1,2,3,4;BYDAY=MO,TU,WE,TH,FR,SA"), false},
        {rule("FREQ=YEARLY;INTERVAL=2147483647"), false},
        {rule("FREQ=DAILY"), false},
        {calendar(event("DTSTART:20260101T000000Z\r\n" + repeated("RRULE:FREQ=SECONDLY\r\n", 100'000))), true},
        {calendar(repeated(event("DTSTART:19700101T000000Z\r\nRRULE:FREQ=MINUTELY;BYDAY=MO;COUNT=99999999"), 50'000)),
            true},
        {calendar(event(
             "DTSTART:20260101T000000Z\r\nRRULE:FREQ=DAILY\r\n" + repeated("EXDATE:20260102T000000Z\r\n", 10'000))),
            false},
        {calendar(event("DTSTART:20260101T000000Z\r\nEXDATE:" + repeated("20260102T000000Z,", 300'000))), false},
        {repeated("BEGIN:VCALENDAR\r\nBEGIN:VEVENT\r\n", 100'000), false},
        {repeated("BEGIN:X\r\n", 500'000), false},
        {calendar(event("DTSTART;" + repeated("X=\"", 1'700'000))), false},
        {calendar(event("DTSTART:20260101T000000Z\r\nDURATION:P" + repeated("9", 5'000'000) + "D")), false},
        {calendar("BEGIN:VTIMEZONE\r\nTZID:x\r\n"
             + repeated("BEGIN:STANDARD\r\nDTSTART:16010101T000000\r\nRRULE:FREQ=SECONDLY\r\nTZOFFSETFROM:+0000\r\n"
                        "TZOFFSETTO:+0100\r\nEND:STANDARD\r\n",
                 20'000)
             + "END:VTIMEZONE\r\n" + repeated(event("DTSTART;TZID=x:20260101T000000"), 1000)),
            false},
        {calendar(manyZones()), false},
        {std::string(5'000'000, '\0'), false},
    };
    for (const Case& one : cases) {
        const auto start = std::chrono::steady_clock::now();
        const Occurrences found = occurrences(one.text, kYear);
        const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - start;
        EXPECT_EQ(found.isBounded, one.isBounded) << one.text.substr(0, 200);
        EXPECT_LT(taken.count(), 3) << one.text.substr(0, 200); // some ten times what it takes
        firstOccurrences(timesText(one.text.substr(0, 100'000)));
    }
}

} // namespace
} // namespace mervo::desk
