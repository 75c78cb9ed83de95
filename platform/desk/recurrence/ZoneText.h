#pragma once

#include <cstdint>
#include <string>

namespace mervo::desk {

/// The VTIMEZONE (RFC 5545, 3.6.5) of an Olson zone for times from `since` (seconds since 1970 UTC) on: content lines
/// with CRLF, from BEGIN to END. Changes that follow a yearly rule are one rule. Empty for a name that the system does
/// not know.
std::string zoneText(const std::string& name, std::int64_t since);

} // namespace mervo::desk
