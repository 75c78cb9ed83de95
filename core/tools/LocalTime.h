#pragma once

#include "platform/eventkit.h"

#include <cstdint>
#include <string>

/// Dates on this machine's clock. Moments are seconds since 1970-01-01 UTC.
namespace mervo::LocalTime {

/// The same time of day so many days of the calendar later, or earlier for a negative number. A time that the clocks
/// skip is as much later; of one that they show twice the first is meant. At most 2,900,000 days: dates have four
/// digits.
std::int64_t daysLater(std::int64_t moment, std::int64_t days);

/// When the clock shows this date; midnight for a whole day. As above where the clocks change.
std::int64_t moment(const platform::DateComponents& date);

std::string day(std::int64_t moment); ///< "2026-03-01"
std::string minute(std::int64_t moment); ///< "2026-03-01 08:15"
std::string day(const platform::DateComponents& date);
std::string minute(const platform::DateComponents& date); ///< midnight for a whole day

} // namespace mervo::LocalTime
