#include "platform/desk/recurrence/ZoneText.h"

#include "platform/desk/recurrence/Zone.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <fmt/format.h>

namespace mervo::desk {
namespace {

std::string offsetText(std::int64_t seconds)
{
    const std::int64_t size = std::llabs(seconds);
    std::string text = fmt::format("{}{:02}{:02}", seconds < 0 ? '-' : '+', size / 3600, size / 60 % 60);
    return size % 60 == 0 ? text : text + fmt::format("{:02}", size % 60);
}

/// One observance. `start` stands on the clock before it.
std::string observance(const ZoneOffset& from, const ZoneOffset& to, WallTime start, const std::string& rule)
{
    const std::string_view kind = to.isDaylight ? "DAYLIGHT" : "STANDARD";
    return fmt::format("BEGIN:{}\r\n{}TZOFFSETFROM:{}\r\nTZOFFSETTO:{}\r\n{}DTSTART:{}\r\nEND:{}\r\n", kind,
        to.name.empty() ? "" : "TZNAME:" + to.name + "\r\n", offsetText(from.seconds), offsetText(to.seconds),
        rule.empty() ? "" : "RRULE:" + rule + "\r\n", dateTimeText(start), kind);
}

/// The rule of a yearly change; empty where RECUR has no words for it: days counted without the leap day, and times
/// that lie on another day than the one that is named.
std::string ruleText(const YearlyChange& change)
{
    constexpr std::array kDays = {"MO", "TU", "WE", "TH", "FR", "SA", "SU"};
    if (change.kind != YearlyChange::Kind::weekdayOfMonth || change.second < 0 || change.second >= kDay)
        return {};
    return fmt::format("FREQ=YEARLY;BYMONTH={};BYDAY={}{}", change.month, change.week == 5 ? -1 : change.week,
        kDays[static_cast<std::size_t>(change.weekday)]);
}

constexpr int kYearsWithoutRule = 10;

/// The changes that hold from `since` on, one observance each, and rules for those that go on for ever.
std::string observances(const Zone& zone, std::int64_t since)
{
    const auto& daylight = zone.rule() ? zone.rule()->daylight : std::optional<ZoneRule::Daylight>();
    const bool hasRules = daylight && !ruleText(daylight->begins).empty() && !ruleText(daylight->ends).empty();
    const std::int64_t known = std::max(since, zone.lastChange().value_or(since));
    const int years = daylight ? (hasRules ? 2 : kYearsWithoutRule) : 0;
    const std::int64_t until = known + years * 366 * kDay;
    ZoneOffset before = zone.offsetAt(since);
    std::string text = observance(before, before, wallTime({1970, 1, 1}), {});
    for (const Zone::Change& change : zone.changesBetween(since, until)) {
        const WallTime start = change.moment + before.seconds;
        const bool isRule = hasRules && change.moment > known;
        const YearlyChange* yearly = !isRule ? nullptr : change.offset.isDaylight ? &daylight->begins : &daylight->ends;
        text += observance(before, change.offset, start, yearly == nullptr ? "" : ruleText(*yearly));
        before = change.offset;
        if (yearly != nullptr && change.moment > known + 366 * kDay)
            break;
    }
    return text;
}

} // namespace

std::string zoneText(const std::string& name, std::int64_t since)
{
    const std::shared_ptr<const Zone> zone = Zone::find(name);
    if (!zone)
        return {};
    return fmt::format("BEGIN:VTIMEZONE\r\nTZID:{}\r\n{}END:VTIMEZONE\r\n", name, observances(*zone, since));
}

} // namespace mervo::desk
