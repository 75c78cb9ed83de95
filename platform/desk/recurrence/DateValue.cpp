#include "platform/desk/recurrence/DateValue.h"

#include <algorithm>
#include <cstdlib>
#include <libical/ical.h>

namespace mervo::desk {
namespace {

constexpr std::int64_t kLongest = 366'000 * kDay;

/// The library looks at the form of a value and not at its range.
bool isInRange(const icaltimetype& time)
{
    return time.year >= 1 && time.year <= 9999 && time.month >= 1 && time.month <= 12 && time.day >= 1
        && time.day <= daysInMonth(time.year, time.month) && time.hour >= 0 && time.hour <= 23 && time.minute >= 0
        && time.minute <= 59 && time.second >= 0 && time.second <= 60;
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
    const icaltimetype time = icaltime_from_string(value.c_str());
    if (icaltime_is_null_time(time) || !isInRange(time))
        return std::nullopt;
    DateValue read;
    read.isDate = time.is_date != 0;
    read.wall = read.isDate
        ? wallTime({time.year, time.month, time.day})
        : wallTime({time.year, time.month, time.day}, time.hour, time.minute, std::min(time.second, 59));
    if (!read.isDate && value.back() == 'Z') {
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
    const icaldurationtype length = icaldurationtype_from_string(value.c_str());
    if (icaldurationtype_is_bad_duration(length) != 0)
        return std::nullopt;
    const std::int64_t sign = length.is_neg != 0 ? -1 : 1;
    const TimeLength read{.days = sign * (length.weeks * 7LL + length.days),
        .seconds = sign * (length.hours * 3600LL + length.minutes * 60LL + length.seconds)};
    if (std::llabs(read.days) > kLongest / kDay || std::llabs(read.seconds) > kLongest)
        return std::nullopt;
    return read;
}

std::int64_t endOf(const DateValue& start, const TimeLength& length)
{
    return start.zone->momentOf(start.wall + length.days * kDay) + length.seconds;
}

} // namespace mervo::desk
