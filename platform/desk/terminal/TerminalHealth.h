#pragma once

#include "platform/desk/health/HealthChecks.h"

namespace mervo::desk {

/// Which terminal windows are opened with, and on which screens.
std::vector<Finding> examineTerminalSettings(const Configuration& configuration);

inline constexpr HealthChecks kTerminalHealth{examineTerminalSettings, nullptr};

} // namespace mervo::desk
