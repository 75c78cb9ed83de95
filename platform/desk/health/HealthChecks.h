#pragma once

#include "platform/desk/settings/Configuration.h"
#include "platform/health.h"

#include <vector>

namespace mervo::desk {

using platform::Finding;

/// The health checks of one kind of data; null where there are none. They only read and never throw: what cannot be
/// examined is a finding.
struct HealthChecks {
    /// Of what is configured. Not run while desk.toml has a mistake.
    std::vector<Finding> (*ofSettings)(const Configuration& configuration) = nullptr;
    std::vector<Finding> (*ofData)() = nullptr;
};

} // namespace mervo::desk
