#pragma once

#include "platform/desk/recurrence/Zone.h"

namespace mervo::desk {

/// Reads a compiled zone file (TZif, RFC 8536). Nothing when it is none.
std::optional<Zone> readZoneFile(std::string_view bytes);

/// Reads a rule of POSIX (IEEE 1003.1, 8.3, with the extensions of RFC 8536, 3.3.1): "CET-1CEST,M3.5.0,M10.5.0/3".
/// Nothing when it is none; a rule without its days of change is none.
std::optional<ZoneRule> readZoneRule(std::string_view text);

} // namespace mervo::desk
