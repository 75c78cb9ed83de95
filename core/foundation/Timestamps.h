#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

/// The one time format of every store: ISO 8601 in UTC at one second, ending in Z ("2026-03-01T08:15:42Z"). Kept as
/// text, so that lexical order is time order.
namespace mervo::Timestamps {

using Time = std::chrono::system_clock::time_point;

std::string now();
std::string string(Time time);

/// The time of a text, as near as the clock can hold it (years 1678 to 2261); nothing for a text in any other form (or
/// a day that does not exist).
std::optional<Time> date(std::string_view text);

} // namespace mervo::Timestamps
