#pragma once

#include "core/automations/launch/AgentRun.h"
#include "core/automations/launch/RunLog.h"

/// A client in a tmux session that nobody need look at, and anybody can attach to.
namespace mervo::TmuxRun {

/// False, with nothing run, when there is no tmux or it makes no session.
bool run(const AgentRun& run, platform::EndRequest& request, const RunLog& log, const RecordExit& record);

void endLeftover(const std::filesystem::path& home, const std::string& name, const RunLog& log);

} // namespace mervo::TmuxRun
