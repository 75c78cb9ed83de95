#pragma once

#include "core/policy/Tool.h"

/// What can be said against the arguments of `auto.add` and `auto.edit` before an automation is made of them. The first
/// failed check is the one reported; each throws ToolError.
namespace mervo::AutomationArguments {

/// `name` is given.
void requireName(const Args& args);

/// A whole new automation: name, schedule, work, client.
void checkNew(const Args& args);

/// A change: the name, and of schedule and client what is given.
void checkChange(const Args& args);

/// Schedules and kinds of work beside the one that counts, and what belongs to another kind of work.
std::vector<Remark> remarks(const Args& args);

} // namespace mervo::AutomationArguments
