#include "platform/desk/recurrence/DateValue.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <string_view>

namespace mervo::desk {
namespace {

constexpr std::int64_t kLongest = 366'000 * kDay;

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

/// The digits at a place; -1 where there are others. All the numbers of a date have their length.
int digits(std::string_view text, std::size_t at, std::size_t count)
{
    int number = 0;
    for (const char c : text.substr(at, count))
        number = isDigit(c) && number >= 0 ? number * 10 + (c - '0') : -1;
    return number;
}

/// "2026-01-05T09:00:00", as some programs write it, without its separators.
std::string compact(std::string_view value)
{
    constexpr std::string_view kSeparated = "    -  -  T  :  :";
    std::string text(value);
    if (value.size() < 10 || value[4] != '-')
        return text;
    for (std::size_t i = std::min(value.size(), kSeparated.size()); i-- > 0;) {
        if (kSeparated[i] != ' ' && kSeparated[i] != 'T' && value[i] == kSeparated[i])
            text.erase(i, 1);
    }
    return text;
}

/// The numbers of a length of time by their units; nothing for what is none.
std::optional<std::array<std::int64_t, 5>> readUnits(std::string_view text)
{
    constexpr std::string_view kUnits = "WDHMS";
    constexpr std::size_t kFirstOfTime = 2;
    std::array<std::int64_t, 5> found = {};
    bool isTime = false;
    std::size_t next = 0; // no unit before this one may follow
    while (!text.empty()) {
        if (text.front() == 'T' && !isTime) {
            isTime = true;
            next = kFirstOfTime;
            text.remove_prefix(1);
            continue;
        }
        std::int64_t number = 0;
        const std::size_t length = std::min(text.find_first_not_of("0123456789"), text.size());
        for (const char c : text.substr(0, length))
            number = std::min(number * 10 + (c - '0'), kLongest);
        const std::size_t unit = length < text.size() ? kUnits.find(text[length]) : std::string_view::npos;
        if (length == 0 || unit == std::string_view::npos || unit < next || (unit >= kFirstOfTime) != isTime)
            return std::nullopt;
        found[unit] = number;
        next = unit + 1;
        text.remove_prefix(length + 1);
    }
    const bool isEmpty = next == 0 || (isTime && next == kFirstOfTime);
    return isEmpty ? std::nullopt : std::optional(found);
}

} // namespace

std::string DateValue::text() const
{
    if (isDate)
        return dateText(wall);
    return dateTimeText(wall) + (clock == Clock::utc ? "Z" : "");
}

std::optional<DateValue> readDateValue(
    const std::string& value, const std::shared_ptr<const Zone>& zone, const std::shared_ptr<const Zone>& local)
{
    const std::string text = compact(value);
    const bool isUtc = text.size() == 16 && text.back() == 'Z';
    if (text.size() != 8 && ((text.size() != 15 && !isUtc) || text[8] != 'T'))
        return std::nullopt;
    const CivilDate date{digits(text, 0, 4), digits(text, 4, 2), digits(text, 6, 2)};
    DateValue read;
    read.isDate = text.size() == 8;
    const int hour = read.isDate ? 0 : digits(text, 9, 2), minute = read.isDate ? 0 : digits(text, 11, 2);
    const int second = read.isDate ? 0 : digits(text, 13, 2);
    if (date.year < 1 || date.month < 1 || date.month > 12 || date.day < 1
        || date.day > daysInMonth(date.year, date.month) || hour < 0 || hour > 23 || minute < 0 || minute > 59
        || second < 0 || second > 60)
        return std::nullopt;
    read.wall = wallTime(date, hour, minute, std::min(second, 59));
    if (isUtc) {
        read.clock = DateValue::Clock::utc;
        read.zone = Zone::utc();
    } else if (!read.isDate && zone) {
        read.clock = DateValue::Clock::zoned;
        read.zone = zone;
    } else {
        read.zone = local;
    }
    return read;
}

WallTime onClockOf(const DateValue& value, const DateValue& other)
{
    if (other.isDate)
        return dayOf(value.wall) * kDay;
    if (value.isDate || value.clock == DateValue::Clock::floating || value.zone == other.zone)
        return value.wall;
    return other.zone->wallTimeAt(value.moment());
}

std::optional<TimeLength> readTimeLength(const std::string& value)
{
    std::string_view text = value;
    const bool hasSign = text.starts_with('-') || text.starts_with('+');
    const std::int64_t sign = text.starts_with('-') ? -1 : 1;
    text.remove_prefix(hasSign ? 1 : 0);
    const auto units = text.starts_with('P') ? readUnits(text.substr(1)) : std::nullopt;
    if (!units)
        return std::nullopt;
    const auto& [weeks, days, hours, minutes, seconds] = *units;
    const TimeLength read{.days = sign * (weeks * 7 + days), .seconds = sign * (hours * 3600 + minutes * 60 + seconds)};
    if (std::llabs(read.days) > kLongest / kDay || std::llabs(read.seconds) > kLongest)
        return std::nullopt;
    return read;
}

std::int64_t endOf(const DateValue& start, const TimeLength& length)
{
    return start.zone->momentOf(start.wall + length.days * kDay) + length.seconds;
}

} // namespace mervo::desk
