#include "platform/applescript/values/Date.h"

#include <array>
#include <cstdio>
#include <ctime>

namespace mervo::applescript {

namespace {

constexpr std::int64_t kDay = 86400;

std::int64_t floorDivide(std::int64_t value, std::int64_t by)
{
    const std::int64_t quotient = value / by;
    return value % by < 0 ? quotient - 1 : quotient;
}

/// Days since 1970-01-01 of a date in the Gregorian calendar; years are shifted to begin in March, so that the leap
/// day is the last of its year.
std::int64_t daysFromCivil(std::int64_t year, std::int64_t month, std::int64_t day)
{
    year += floorDivide(month - 1, 12);
    month = month - 1 - floorDivide(month - 1, 12) * 12 + 1;
    const std::int64_t shifted = month > 2 ? year : year - 1;
    const std::int64_t era = floorDivide(shifted, 400);
    const std::int64_t yearOfEra = shifted - era * 400;
    const std::int64_t dayOfYear = (153 * (month > 2 ? month - 3 : month + 9) + 2) / 5;
    return era * 146097 + yearOfEra * 365 + yearOfEra / 4 - yearOfEra / 100 + dayOfYear + day - 1 - 719468;
}

std::int64_t offsetAt(std::int64_t moment)
{
    const auto time = static_cast<std::time_t>(moment);
    std::tm parts{};
    return localtime_r(&time, &parts) ? parts.tm_gmtoff : 0;
}

/// The zone's offset over one day of Unix time, if it does not change within it.
struct DayOffset {
    std::int64_t day = INT64_MIN;
    std::int64_t offset = 0;
    bool isConstant = false;
};

const DayOffset& dayOffset(std::int64_t day)
{
    static thread_local std::array<DayOffset, 256> seen;
    DayOffset& slot = seen[static_cast<std::size_t>(day) % seen.size()];
    if (slot.day != day) {
        slot.day = day;
        slot.offset = offsetAt(day * kDay);
        slot.isConstant = slot.offset == offsetAt(day * kDay + kDay - 1);
    }
    return slot;
}

template <typename... Arguments>
std::string formatted(const char* format, Arguments... arguments)
{
    char text[96];
    const int length = std::snprintf(text, sizeof text, format, arguments...);
    return {text, static_cast<std::size_t>(length)};
}

} // namespace

Date Date::fromUnix(std::int64_t moment)
{
    const DayOffset& day = dayOffset(floorDivide(moment, kDay));
    return {moment + (day.isConstant ? day.offset : offsetAt(moment))};
}

std::int64_t Date::toUnix() const
{
    // The offset depends on the answer. A second look settles it; in the hour that a change of clocks skips or
    // repeats, either answer is right.
    const std::int64_t guess = seconds - offsetAt(seconds);
    return seconds - offsetAt(guess);
}

Date Date::fromParts(std::int64_t year, std::int64_t month, std::int64_t day, std::int64_t secondOfDay)
{
    return {daysFromCivil(year, month, day) * kDay + secondOfDay};
}

DateParts::DateParts(Date date)
{
    const std::int64_t days = floorDivide(date.seconds, kDay);
    secondOfDay = static_cast<int>(date.seconds - days * kDay);
    weekday = static_cast<int>(days + 4 - floorDivide(days + 4, 7) * 7) + 1;
    const std::int64_t shifted = days + 719468;
    const std::int64_t era = floorDivide(shifted, 146097);
    const std::int64_t dayOfEra = shifted - era * 146097;
    const std::int64_t yearOfEra = (dayOfEra - dayOfEra / 1460 + dayOfEra / 36524 - dayOfEra / 146096) / 365;
    const std::int64_t dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
    const std::int64_t shiftedMonth = (5 * dayOfYear + 2) / 153;
    day = static_cast<int>(dayOfYear - (153 * shiftedMonth + 2) / 5 + 1);
    month = static_cast<int>(shiftedMonth < 10 ? shiftedMonth + 3 : shiftedMonth - 9);
    year = yearOfEra + era * 400 + (month <= 2 ? 1 : 0);
}

std::string dateString(Date date)
{
    const DateParts parts(date);
    return formatted("%s, %s %d, %lld", kWeekdayNames[parts.weekday - 1], kMonthNames[parts.month - 1], parts.day,
        static_cast<long long>(parts.year));
}

std::string timeString(Date date)
{
    const DateParts parts(date);
    const int hour = parts.secondOfDay / 3600;
    return formatted("%d:%02d:%02d %s", hour % 12 == 0 ? 12 : hour % 12, parts.secondOfDay / 60 % 60,
        parts.secondOfDay % 60, hour < 12 ? "AM" : "PM");
}

std::string shortDateString(Date date)
{
    const DateParts parts(date);
    return formatted("%d/%d/%02d", parts.month, parts.day, static_cast<int>((parts.year % 100 + 100) % 100));
}

std::string longDate(Date date)
{
    return dateString(date) + " at " + timeString(date);
}

} // namespace mervo::applescript
