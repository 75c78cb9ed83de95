#include "core/approval/Approval.h"

#include "core/catalogue/Tools.h"
#include "core/foundation/Text.h"
#include "core/policy/HarnessRunner.h"

#include <exception>

namespace mervo::Approval {

namespace {

constexpr auto kActor = "cockpit";
constexpr std::int64_t kVerdictHours = 168;

bool queuedAgain(const PendingAction& action, const PendingStore& pending)
{
    try {
        pending.save(action);
        return true;
    } catch (const std::exception&) {
        return false; // what is lost is reported with the failure itself
    }
}

/// "refus de mail.send (boss@example.org Work) : too early"
std::string verdict(const PendingAction& action, std::string_view note)
{
    std::vector<std::string> parties;
    for (const auto* key : {"from", "account"})
        if (const auto found = action.args.find(key); found != action.args.end() && !found->second.empty())
            parties.push_back(found->second);
    std::string text = "refus de " + action.tool;
    if (!parties.empty())
        text += " (" + Text::join(parties, " ") + ")";
    if (!note.empty())
        text += " : " + std::string(note);
    return text;
}

} // namespace

Result approve(const PendingAction& action, Stores stores)
{
    const Tool* tool = Tools::find(action.tool);
    if (tool == nullptr)
        return UnknownTool{"unknown tool: " + action.tool};
    try {
        tool->build(action.args);
    } catch (const std::exception& refusal) {
        return Refused{refusal.what()};
    }
    if (!stores.pending.remove(action.id))
        return AlreadyGone{};
    const auto run = HarnessRunner::executeBuilt(*tool, action.args);
    AuditLog::Details details = action.args;
    if (run.ok) {
        details["result"] = HarnessRunner::truncate(run.output, HarnessRunner::kAuditTextLimit);
        stores.audit.log(kActor, action.tool, std::nullopt, details, "executed", "approved");
        return Executed{run.output};
    }
    stores.audit.log(kActor, action.tool, std::nullopt, details, "error", run.error);
    return Failed{run.error, queuedAgain(action, stores.pending)};
}

bool reject(const PendingAction& action, std::string_view note, Stores stores)
{
    const std::string_view why = Text::trimmed(note);
    stores.audit.log(
        kActor, action.tool, std::nullopt, action.args, "rejected", std::string(why.empty() ? "user_rejected" : why));
    const bool removed = stores.pending.remove(action.id);
    stores.feedback.recordVerdict(verdict(action, why), std::nullopt, kVerdictHours);
    return removed;
}

} // namespace mervo::Approval
