#pragma once

#include "core/automations/model/RunPaths.h"
#include "platform/end_request.h"

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace mervo {

/// One run of an agent automation, as it is launched. The prompt lies in its file already.
struct AgentRun {
    std::string name;
    std::string client; ///< as it is shown in the log
    std::vector<std::string> arguments; ///< the client's program and its arguments (AgentCommand)
    std::string cwd;
    std::chrono::seconds timeout{};
    bool visible = true;
    std::optional<std::int64_t> screen = {};
    std::filesystem::path home;
    RunPaths paths{home, name};
    std::string searchPath; ///< the run's PATH
    std::function<void()> started = [] {}; ///< called as soon as the client has been started, with the prompt
};

/// The exit codes of runs that no program gave one.
namespace RunExit {
inline constexpr int kNotStarted = -1, kNoSignal = 1, kTimedOut = 124, kBySignal = 128;
}

/// Called with the exit code as soon as a run has one.
using RecordExit = std::function<void(int)>;

} // namespace mervo
