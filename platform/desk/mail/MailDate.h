#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace mervo::desk {

/// Parses a Date field into seconds since 1970 (RFC 5322 with its obsolete forms: two-digit years, zone names,
/// comments). Nothing when it is not a date.
std::optional<std::int64_t> parseMailDate(std::string_view text);

/// Formats a Date field in the local zone: "Thu, 15 Jan 2026 10:00:00 +0100".
std::string formatMailDate(std::int64_t seconds);

} // namespace mervo::desk
