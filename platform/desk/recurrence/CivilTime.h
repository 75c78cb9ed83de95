#pragma once

#include <cstdint>
#include <string>

/// The proleptic Gregorian calendar, as numbers.
namespace mervo::desk {

/// What a clock on a wall shows: seconds since 1970-01-01 00:00 on that clock, whatever its zone.
using WallTime = std::int64_t;

constexpr std::int64_t kDay = 86400; ///< seconds
constexpr WallTime kFirstWallTime = -62135596800; ///< 0001-01-01 00:00
constexpr WallTime kLastWallTime = 253402300799; ///< 9999-12-31 23:59:59

struct CivilDate {
    int year = 1970;
    int month = 1; ///< 1-12
    int day = 1; ///< 1-31

    friend bool operator==(const CivilDate&, const CivilDate&) = default;
};

/// Monday is 0.
enum class Weekday : std::uint8_t { monday, tuesday, wednesday, thursday, friday, saturday, sunday };

bool isLeap(int year);
int daysInMonth(int year, int month);
int daysInYear(int year);
/// Days since 1970-01-01.
std::int64_t dayNumber(const CivilDate& date);
CivilDate civilDate(std::int64_t dayNumber);
Weekday weekdayOf(std::int64_t dayNumber);
/// The day and the second within it.
std::int64_t dayOf(WallTime time);
std::int64_t secondOfDay(WallTime time);
WallTime wallTime(const CivilDate& date, int hour = 0, int minute = 0, int second = 0);

/// As RFC 5545, 3.3.4 and 3.3.5 write them: "20260105", "20260105T090000".
std::string dateText(WallTime time);
std::string dateTimeText(WallTime time);

} // namespace mervo::desk
