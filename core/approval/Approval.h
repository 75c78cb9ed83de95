#pragma once

#include "core/feedback/AskService.h"
#include "core/policy/AuditLog.h"
#include "core/policy/PendingStore.h"

#include <string>
#include <string_view>
#include <variant>
#include <vector>

/// A person's verdict on a queued action. Operations of the cockpit and of nothing else: no front end of the agents'
/// side may link this folder, and that is how the assistant can never approve its own actions.
namespace mervo::Approval {

/// What a verdict works on.
struct Stores {
    const PendingStore& pending;
    AuditLog& audit;
    AskService& feedback;
};

/// The tool has left the catalogue; the file stays and can be rejected.
struct UnknownTool {
    std::string text; ///< "unknown tool: " and the id
};
/// The tool refuses the arguments (now); the file stays.
struct Refused {
    std::string text;
};
/// Someone else approved or rejected the action first, or its file could not be removed: nothing ran.
struct AlreadyGone { };
/// The file was removed by this call: the action is this caller's to run, and nobody else's.
struct Claimed {
    PendingAction action;
};
/// `warnings` are sentences about what could not be read or written around the run, above all its audit row.
struct Executed {
    std::string output;
    std::vector<std::string> warnings = {};
};
/// It ran and failed. `queuedAgain` says that it waits under its old id and time; if not, a warning says why.
struct Failed {
    std::string error;
    bool queuedAgain = false;
    std::vector<std::string> warnings = {};
};
using Claim = std::variant<UnknownTool, Refused, AlreadyGone, Claimed>;
using Run = std::variant<Executed, Failed>;
using Result = std::variant<UnknownTool, Refused, AlreadyGone, Executed, Failed>;

/// The first half of an approval: looks the tool up, lets it check the arguments and removes the file. Whoever removed
/// it runs: of several approvals at once one does. Quick, and runs nothing; never throws.
[[nodiscard]] Claim claim(const PendingAction& action, const PendingStore& pending);

/// The second half: runs the action as it was shown, whatever its file said by then; policy is not asked again. Writes
/// the audit row; an action that failed is queued again. A crash in the middle loses the queued copy rather than run it
/// twice. Blocks while the tool runs; any thread; never throws.
[[nodiscard]] Run run(const Claimed& claimed, Stores stores);

/// Both halves.
[[nodiscard]] Result approve(const PendingAction& action, Stores stores);

/// Drops the action and tells later runs of automations so for a week. The note may be empty. True when this call
/// removed the file; the audit row and the verdict are written in any case. What could not be written is heard by a
/// StoreFailures::Scope of the caller. Never throws.
bool reject(const PendingAction& action, std::string_view note, Stores stores);

} // namespace mervo::Approval
