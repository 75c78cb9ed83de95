#pragma once

#include "core/feedback/AskService.h"
#include "core/policy/AuditLog.h"
#include "core/policy/PendingStore.h"

#include <string>
#include <string_view>
#include <variant>

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
struct Executed {
    std::string output;
};
/// It ran and failed. `queuedAgain` says that it waits under its old id and time.
struct Failed {
    std::string error;
    bool queuedAgain = false;
};
using Result = std::variant<UnknownTool, Refused, AlreadyGone, Executed, Failed>;

/// Runs the action as it was shown, whatever its file says by now; policy is not asked again. The file is removed
/// before the run, and whoever removed it runs: of several approvals at once one does. A crash in the middle loses the
/// queued copy rather than run it twice. Writes the audit row. Blocks while the tool runs; never throws.
[[nodiscard]] Result approve(const PendingAction& action, Stores stores);

/// Drops the action and tells later runs of automations so for a week. The note may be empty. True when this call
/// removed the file; the audit row and the verdict are written in any case. Never throws.
bool reject(const PendingAction& action, std::string_view note, Stores stores);

} // namespace mervo::Approval
