#pragma once

#include "core/automations/launch/AgentRun.h"
#include "core/automations/launch/RunLog.h"
#include "core/automations/supervisor/RunSettings.h"
#include "platform/end_request.h"

#include <filesystem>
#include <string>

namespace mervo {

/// A run that holds its lock, and what its kinds of work have in common.
struct RunContext {
    const std::string& name;
    const std::filesystem::path& home;
    const RunPaths& paths;
    const RunSettings& settings;
    const std::string& searchPath; ///< the run's PATH
    const RunLog& log;
    platform::EndRequest& request;
    const RecordExit& record; ///< writes the state; to be called once
};

/// Runs the command and mails a failure where that is wished. False, with nothing recorded, when there is no command.
bool runScript(const RunContext& run);

/// Writes the prompt and launches the client.
void runAgent(const RunContext& run);

} // namespace mervo
