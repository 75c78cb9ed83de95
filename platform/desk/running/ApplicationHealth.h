#pragma once

#include "platform/desk/health/HealthChecks.h"

namespace mervo::desk {

/// The owner's own programs that desk.toml names: each is there.
std::vector<Finding> examineApplicationSettings(const Configuration& configuration);

inline constexpr HealthChecks kApplicationHealth{examineApplicationSettings, nullptr};

} // namespace mervo::desk
