#pragma once

#include "core/foundation/Timestamps.h"

#include <string>
#include <string_view>

/// A time relative to now in the largest fitting unit: "5 minutes ago", "1 week ago", "in 2 hours".
namespace mervo::RelativeTime {

std::string text(Timestamps::Time then, Timestamps::Time now);
/// The same for a text of `Timestamps`; empty for any other text.
std::string text(std::string_view then, Timestamps::Time now);

} // namespace mervo::RelativeTime
