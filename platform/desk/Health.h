#pragma once

#include "platform/health.h"

#include <vector>

namespace mervo::desk {

/// Looks at everything that the desk stands on. Creates and writes nothing, and never throws: what cannot be looked at
/// is a finding.
std::vector<platform::Finding> examineDesk();

} // namespace mervo::desk
