#pragma once

#include "core/automations/model/Automation.h"

#include <span>
#include <string>

/// Automations as the tools show them to agents.
namespace mervo::AutomationText {

/// One line for each: "  name [agent/bg] daily 8:30  ok @ 2026-03-01 08:31  - what it does", "✗" in front of one that
/// is paused. A sentence when there is none.
std::string list(std::span<const Automation> automations);

/// "agent automation, daily 8:30 - what it does".
std::string preview(const Automation& automation);

/// The last lines of an automation's log, of the last 4 MiB at most. A sentence when there is no log.
std::string logTail(const std::string& name, std::int64_t lines);

} // namespace mervo::AutomationText
