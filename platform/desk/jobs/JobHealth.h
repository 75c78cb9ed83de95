#pragma once

#include "platform/desk/health/HealthChecks.h"

namespace mervo::desk {

/// Who starts jobs, when nobody does, and whether jobs that are loaded wait in vain.
std::vector<Finding> examineJobs(const Configuration& configuration);

inline constexpr HealthChecks kJobHealth{examineJobs, nullptr};

} // namespace mervo::desk
