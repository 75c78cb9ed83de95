#pragma once

#include "core/automations/launch/AgentRun.h"
#include "core/automations/launch/RunLog.h"
#include "platform/process.h"

/// A client without a terminal: this process waits for its end, without a limit, and its output goes to the log.
namespace mervo::DirectRun {

void run(const AgentRun& run, platform::EndRequest& request, const RunLog& log, const RecordExit& record);

/// Runs a program whose output goes to the log, reading this file, or nothing without one. Its exit code: 128 and the
/// number of the signal that ended it, or that ended this process' work; -1 when it could not be started, which the log
/// says.
int attend(const platform::Command& command, const std::filesystem::path& input, platform::EndRequest& request,
    const RunLog& log);

} // namespace mervo::DirectRun
