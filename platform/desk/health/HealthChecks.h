#pragma once

#include "platform/desk/settings/Configuration.h"
#include "platform/health.h"

#include <vector>

namespace mervo::desk {

using platform::Finding;

/// What one kind of data can say of its health. Both only read, and neither throws: what cannot be looked at is a
/// finding. Null where there is nothing to say.
struct HealthChecks {
    std::vector<Finding> (*ofSettings)(
        const Configuration& configuration) = nullptr; ///< left out while desk.toml is wrong
    std::vector<Finding> (*ofData)() = nullptr;
};

} // namespace mervo::desk
