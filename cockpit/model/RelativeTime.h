#pragma once

#include "core/foundation/Timestamps.h"

#include <string>
#include <string_view>

/// How long ago, in the largest unit that fits at least once: "5 minutes ago", "1 week ago", "in 2 hours".
namespace mervo::RelativeTime {

std::string text(Timestamps::Time then, Timestamps::Time now);
/// The same for a text of `Timestamps`; empty when it is none.
std::string text(std::string_view then, Timestamps::Time now);

} // namespace mervo::RelativeTime
