#pragma once

#include "core/policy/Tool.h"

/// Checks of the arguments of `auto.add` and `auto.edit`. Each throws ToolError for the first thing that is wrong.
namespace mervo::AutomationArguments {

/// `name` is given.
void requireName(const Args& args);

/// A whole new automation: name, schedule, work, client.
void checkNew(const Args& args);

/// A change: the name, and of schedule and client what is given.
void checkChange(const Args& args);

/// Remarks on schedules and kinds of work that another one overrides, and on arguments of another kind of work.
std::vector<Remark> remarks(const Args& args);

} // namespace mervo::AutomationArguments
