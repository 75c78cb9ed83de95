#pragma once

#include "core/automations/launch/AgentRun.h"
#include "core/automations/launch/RunLog.h"

/// Starts the client of an agent's run, waits for its end, and ends what is left of it: in a window of the owner's
/// terminal, in a detached tmux session, or, where there is no tmux, as a program without a terminal.
namespace mervo::Launch {

/// Gives the run's exit code to `record` as soon as there is one, once, and returns when the run's window or session is
/// closed. A request to end does that too.
void run(const AgentRun& run, platform::EndRequest& request, const RunLog& log, const RecordExit& record);

/// Ends what a run whose supervisor was killed may have left: its tmux session, its window, its processes.
void endLeftovers(const std::filesystem::path& home, const RunPaths& paths, const std::string& name, const RunLog& log);

} // namespace mervo::Launch
