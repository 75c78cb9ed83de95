#pragma once

#include "platform/desk/health/HealthChecks.h"

namespace mervo::desk {

/// The address book's folder, and what in it cannot be read, by name.
std::vector<Finding> examineContactSettings(const Configuration& configuration);

inline constexpr HealthChecks kContactHealth{examineContactSettings, nullptr};

} // namespace mervo::desk
