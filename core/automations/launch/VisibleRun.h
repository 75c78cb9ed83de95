#pragma once

#include "core/automations/launch/AgentRun.h"
#include "core/automations/launch/RunLog.h"

/// A client in a window of the owner's terminal, which scripts address as "iTerm2".
namespace mervo::VisibleRun {

/// Where no window opens, the run waits for its deadline.
void run(const AgentRun& run, platform::EndRequest& request, const RunLog& log, const RecordExit& record);

void endLeftover(const RunPaths& paths, const RunLog& log);

} // namespace mervo::VisibleRun
