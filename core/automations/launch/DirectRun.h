#pragma once

#include "core/automations/launch/AgentRun.h"
#include "core/automations/launch/RunLog.h"
#include "platform/process.h"

/// A client without a terminal: this process waits for its end, without a limit, and its output goes to the log.
namespace mervo::DirectRun {

void run(const AgentRun& run, platform::EndRequest& request, const RunLog& log, const RecordExit& record);

/// Runs a program of a run whose output goes to the log, reading this file, or nothing without one, and tells `started`
/// when it runs. Its exit code: 128 and the number of the signal that ended it, or that ended this process' work; -1
/// when it could not be started, which the log says.
int attend(
    const platform::Command& command, const std::filesystem::path& input, const RunPaths& paths,
    platform::EndRequest& request, const RunLog& log, const std::function<void()>& started = [] {});

/// Ends what a program has left whose supervisor was killed, and which has died with that.
void endLeftover(const RunPaths& paths, const RunLog& log);

} // namespace mervo::DirectRun
