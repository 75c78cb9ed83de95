#pragma once

#include "core/automations/launch/AgentRun.h"

#include <string>
#include <vector>

/// What the programs of a run find in their environment: that of this process without whatever begins with "RONDEL_",
/// which would belong to another run.
namespace mervo::RunEnvironment {

/// Where programs are looked for: the folder of this program, the owner's own, the system's, and what PATH says here.
std::string searchPath();

std::vector<std::string> ofHelpers();
std::vector<std::string> ofScript(const std::string& searchPath);
std::vector<std::string> ofAgent(const AgentRun& run);

} // namespace mervo::RunEnvironment
