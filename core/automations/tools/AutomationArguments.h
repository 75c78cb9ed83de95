#pragma once

#include "core/automations/model/Automation.h"
#include "core/automations/model/AutomationDraft.h"
#include "core/policy/Tool.h"

/// What the arguments of the tools mean. Each function throws ToolError for the first thing that is wrong.
namespace mervo::AutomationArguments {

/// The automation that `name` names, as it is now.
Automation existing(const Args& args);

/// A whole new automation: name, schedule, work and its options.
AutomationDraft newDraft(const Args& args);

/// The automation that `name` names, with what the arguments change of it.
AutomationDraft changedDraft(const Args& args);

/// Remarks on schedules and kinds of work that another one overrides, and on arguments of another kind of work.
std::vector<Remark> remarks(const Args& args);

} // namespace mervo::AutomationArguments
