#pragma once

#include "core/policy/Tool.h"

#include <string>

namespace mervo {

/// A tool whose application this build cannot reach. It stays in the catalogue: its arguments are checked, it is
/// judged, queued and previewed like any other, and a run fails with a sentence that names the missing bridge.
Tool withoutBridge(std::string application, Tool tool);

} // namespace mervo
