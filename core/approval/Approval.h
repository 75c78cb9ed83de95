#pragma once

#include "core/feedback/AskService.h"
#include "core/policy/AuditLog.h"
#include "core/policy/PendingStore.h"

#include <string>
#include <string_view>
#include <variant>
#include <vector>

/// A person's verdict on a queued action. Only the cockpit may use this folder; the front ends that agents call may not
/// link it, so an agent can never approve its own actions.
namespace mervo::Approval {

/// What a verdict reads and writes.
struct Stores {
    const PendingStore& pending;
    AuditLog& audit;
    AskService& feedback;
};

/// The catalogue no longer has the tool; the file stays and can be rejected.
struct UnknownTool {
    std::string text; ///< "unknown tool: " and the id
};
/// The tool refuses the arguments; the file stays.
struct Refused {
    std::string text;
};
/// The action was approved or rejected elsewhere first, or its file could not be removed: nothing ran.
struct AlreadyGone { };
/// This call removed the file: this caller alone may run the action.
struct Claimed {
    PendingAction action;
    const Tool* tool; ///< of the catalogue, never null
};
/// `warnings` are sentences about what could not be read or written around the run, above all its audit row.
struct Executed {
    std::string output;
    std::vector<std::string> warnings = {};
};
/// The tool failed. `queuedAgain`: the action waits again under its old id and time; if false, a warning says why.
struct Failed {
    std::string error;
    bool queuedAgain = false;
    std::vector<std::string> warnings = {};
};
using Claim = std::variant<UnknownTool, Refused, AlreadyGone, Claimed>;
using Run = std::variant<Executed, Failed>;
using Result = std::variant<UnknownTool, Refused, AlreadyGone, Executed, Failed>;

/// The first half of an approval: finds the tool, lets it check the arguments and removes the file. Of several
/// concurrent approvals one removes it and runs the action. Fast; runs nothing; never throws.
[[nodiscard]] Claim claim(const PendingAction& action, const PendingStore& pending);

/// The second half: runs the action as it was shown, even if its file has changed since; policy is not evaluated again.
/// Writes the audit row and queues a failed action again. A crash in between loses the action rather than run it twice.
/// Blocks while the tool runs; any thread; never throws.
[[nodiscard]] Run run(const Claimed& claimed, Stores stores);

/// Both halves.
[[nodiscard]] Result approve(const PendingAction& action, Stores stores);

/// Drops the action, and for a week tells runs of automations about it. The note may be empty. True when this call
/// removed the file; the audit row and the verdict are written either way. Failed writes are reported to the caller's
/// StoreFailures::Scope. Never throws.
bool reject(const PendingAction& action, std::string_view note, Stores stores);

} // namespace mervo::Approval
