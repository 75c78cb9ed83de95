#include "platform/desk/recurrence/CivilTime.h"

#include <fmt/format.h>

namespace mervo::desk {
namespace {

std::int64_t floorDivide(std::int64_t value, std::int64_t by)
{
    return value / by - (value % by < 0 ? 1 : 0);
}

} // namespace

bool isLeap(int year)
{
    return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
}

int daysInMonth(int year, int month)
{
    constexpr int kDays[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    return month == 2 && isLeap(year) ? 29 : kDays[month - 1];
}

int daysInYear(int year)
{
    return isLeap(year) ? 366 : 365;
}

// Both count years from March on, so that the leap day is a year's last.
std::int64_t dayNumber(const CivilDate& date)
{
    const std::int64_t year = date.month <= 2 ? date.year - 1 : date.year;
    const std::int64_t era = floorDivide(year, 400);
    const std::int64_t yearOfEra = year - era * 400;
    const std::int64_t dayOfYear = (153 * (date.month + (date.month > 2 ? -3 : 9)) + 2) / 5 + date.day - 1;
    return era * 146097 + yearOfEra * 365 + yearOfEra / 4 - yearOfEra / 100 + dayOfYear - 719468;
}

CivilDate civilDate(std::int64_t number)
{
    const std::int64_t shifted = number + 719468;
    const std::int64_t era = floorDivide(shifted, 146097);
    const std::int64_t day = shifted - era * 146097;
    const std::int64_t year = (day - day / 1460 + day / 36524 - day / 146096) / 365;
    const std::int64_t dayOfYear = day - (365 * year + year / 4 - year / 100);
    const std::int64_t month = (5 * dayOfYear + 2) / 153;
    const int civilMonth = static_cast<int>(month < 10 ? month + 3 : month - 9);
    return {static_cast<int>(year + era * 400 + (civilMonth <= 2 ? 1 : 0)), civilMonth,
        static_cast<int>(dayOfYear - (153 * month + 2) / 5 + 1)};
}

Weekday weekdayOf(std::int64_t number)
{
    return static_cast<Weekday>(((number + 3) % 7 + 7) % 7);
}

std::int64_t dayOf(WallTime time)
{
    return floorDivide(time, kDay);
}

std::int64_t secondOfDay(WallTime time)
{
    return time - dayOf(time) * kDay;
}

WallTime wallTime(const CivilDate& date, int hour, int minute, int second)
{
    return dayNumber(date) * kDay + hour * 3600 + minute * 60 + second;
}

std::string dateText(WallTime time)
{
    const CivilDate date = civilDate(dayOf(time));
    return fmt::format("{:04}{:02}{:02}", date.year, date.month, date.day);
}

std::string dateTimeText(WallTime time)
{
    const std::int64_t second = secondOfDay(time);
    return fmt::format("{}T{:02}{:02}{:02}", dateText(time), second / 3600, second / 60 % 60, second % 60);
}

} // namespace mervo::desk
