#pragma once

#include "platform/desk/recurrence/CivilTime.h"

#include <bitset>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace mervo::desk {

enum class Frequency : std::uint8_t { yearly, monthly, weekly, daily, hourly, minutely, secondly };

/// A value of the type RECUR (RFC 5545, 3.3.10), without UNTIL, whose meaning depends on the event.
struct Rule {
    struct Day {
        Weekday weekday = Weekday::monday;
        int position = 0; ///< the n-th of the month or year, from its end where negative; 0: each
    };

    Frequency frequency = Frequency::daily;
    std::int64_t interval = 1; ///< at least 1
    std::optional<std::int64_t> count = {};
    Weekday weekStart = Weekday::monday;
    std::bitset<60> seconds = {}, minutes = {}; ///< nothing set: the part is not given, in all of these
    std::bitset<24> hours = {};
    std::bitset<13> months = {};
    std::vector<Day> days = {};
    std::vector<int> monthDays = {}, yearDays = {}, weeks = {}, positions = {};
};

/// Nothing for a value that is no rule: without FREQ, with a number out of its range or a part given twice. Parts that
/// it does not know are left out. UNTIL is `untilOf`.
std::optional<Rule> readRule(std::string_view value);

/// The value of the part UNTIL as it is written; empty: none.
std::string_view untilOf(std::string_view rule);

/// The same rule with another COUNT.
std::string withCount(std::string_view rule, std::int64_t count);

} // namespace mervo::desk
