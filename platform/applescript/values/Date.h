#pragma once

#include <array>
#include <cstdint>
#include <string>

namespace mervo::applescript {

inline constexpr std::array<const char*, 12> kMonthNames{"January", "February", "March", "April", "May", "June", "July",
    "August", "September", "October", "November", "December"};
inline constexpr std::array<const char*, 7> kWeekdayNames{
    "Sunday", "Monday", "Tuesday", "Wednesday", "Thursday", "Friday", "Saturday"};

/// A local wall-clock time in whole seconds, without a zone: `seconds` counts the seconds that a clock on the wall
/// would show since 1970-01-01 00:00:00, so adding a day keeps the time of day whatever the zone does.
struct Date {
    std::int64_t seconds = 0;

    /// The wall clock of this machine's zone at a moment of Unix time. Cheap for many moments: the zone's offset is
    /// kept for each day seen last.
    static Date fromUnix(std::int64_t moment);
    /// The moment at which this machine's wall clock shows this date.
    std::int64_t toUnix() const;

    static Date fromParts(std::int64_t year, std::int64_t month, std::int64_t day, std::int64_t secondOfDay = 0);

    // The check takes the 0 that a comparison is compared with for a pointer.
    friend auto operator<=>(const Date&, const Date&) noexcept = default; // NOLINT(modernize-use-nullptr)
};

/// The parts of a date; month 1-12, weekday 1 is Sunday.
struct DateParts {
    std::int64_t year = 1970;
    int month = 1;
    int day = 1;
    int weekday = 5;
    int secondOfDay = 0;

    explicit DateParts(Date date);
};

/// "Thursday, February 29, 2024 at 3:04:05 PM", and its two halves.
std::string longDate(Date date);
std::string dateString(Date date);
std::string timeString(Date date);
std::string shortDateString(Date date);

} // namespace mervo::applescript
