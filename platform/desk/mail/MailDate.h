#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace mervo::desk {

/// The moment a Date field names, in seconds since 1970 (RFC 5322 with its obsolete forms: two-digit years, zone names,
/// comments). Nothing when it is no date.
std::optional<std::int64_t> parseMailDate(std::string_view text);

/// A moment as a Date field, in the local zone: "Thu, 15 Jan 2026 10:00:00 +0100".
std::string formatMailDate(std::int64_t seconds);

} // namespace mervo::desk
