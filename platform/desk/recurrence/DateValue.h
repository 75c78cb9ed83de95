#pragma once

#include "platform/desk/recurrence/Zone.h"

namespace mervo::desk {

/// A value of the type DATE or DATE-TIME (RFC 5545, 3.3.4, 3.3.5) with the clock that it stands on.
struct DateValue {
    enum class Clock : std::uint8_t { floating, utc, zoned };

    WallTime wall = 0; ///< of a date: its midnight
    bool isDate = false;
    Clock clock = Clock::floating;
    std::shared_ptr<const Zone> zone = {}; ///< never null; the owner's for what floats

    /// Seconds since 1970 UTC.
    std::int64_t moment() const { return zone->momentOf(wall); }
    /// As it is written: "20260105", "20260105T090000", "20260105T090000Z".
    std::string text() const;
};

/// Reads "20260105", "20260105T090000" or "20260105T090000Z", whatever VALUE says. `zone` is what TZID names, null for
/// none; `local` the owner's. Nothing for what is no date of the years 1 to 9999.
std::optional<DateValue> readDateValue(
    const std::string& value, const std::shared_ptr<const Zone>& zone, const std::shared_ptr<const Zone>& local);

/// The value on the clock of another one: what a date of a rule is compared with. A floating time is taken to stand on
/// that clock already.
WallTime onClockOf(const DateValue& value, const DateValue& other);

/// A length of time (RFC 5545, 3.3.6): days are days of the clock, the rest is exact.
struct TimeLength {
    std::int64_t days = 0;
    std::int64_t seconds = 0;
};

/// Reads "P1D", "PT1H30M"; negative ones too. Nothing for what is none, and for more than a thousand years.
std::optional<TimeLength> readTimeLength(const std::string& value);

/// Where a length of time that starts with a value ends.
std::int64_t endOf(const DateValue& start, const TimeLength& length);

} // namespace mervo::desk
