#include "core/approval/Approval.h"

#include "core/catalogue/Catalogue.h"
#include "core/foundation/StoreBoundary.h"
#include "core/foundation/Text.h"
#include "core/policy/HarnessRunner.h"
#include "core/policy/RunningActs.h"

#include <exception>

namespace mervo::Approval {

namespace {

constexpr auto kActor = "cockpit";
constexpr std::int64_t kVerdictHours = 168;

bool queuedAgain(const PendingAction& action, const PendingStore& pending)
{
    return orElse("the action could not be queued again", false, [&] {
        pending.save(action);
        return true;
    });
}

/// "refus de mail.send (boss@example.org Work) : too early"
std::string verdict(const PendingAction& action, std::string_view note)
{
    std::vector<std::string> parties;
    for (const auto* key : {"from", "account"}) {
        if (const auto found = action.args.find(key); found != action.args.end() && !found->second.empty())
            parties.push_back(found->second);
    }
    std::string text = "refus de " + action.tool;
    if (!parties.empty())
        text += " (" + Text::join(parties, " ") + ")";
    if (!note.empty())
        text += " : " + std::string(note);
    return text;
}

} // namespace

Claim claim(const PendingAction& action, const PendingStore& pending)
{
    const Tool* tool = Tools::find(action.tool);
    if (tool == nullptr)
        return UnknownTool{"unknown tool: " + action.tool};
    try {
        tool->build(action.args);
    } catch (const std::exception& refusal) {
        return Refused{refusal.what()};
    }
    if (!pending.remove(action.id))
        return AlreadyGone{};
    return Claimed{.action = action, .tool = tool};
}

Run run(const Claimed& claimed, Stores stores)
{
    const PendingAction& action = claimed.action;
    const StoreFailures::Scope failures;
    RunningAct running(stores.pending.dir().parent_path(), *claimed.tool, action.args, kActor, "approved");
    const auto done = HarnessRunner::executeBuilt(*claimed.tool, action.args);
    running.ending();
    AuditLog::Details details = action.args;
    if (done.ok) {
        details["result"] = HarnessRunner::truncate(done.output, HarnessRunner::kAuditTextLimit);
        stores.audit.log(kActor, action.tool, std::nullopt, details, "executed", "approved");
        return Executed{.output = done.output, .warnings = failures.sentences()};
    }
    stores.audit.log(kActor, action.tool, std::nullopt, details, "error", done.error);
    const bool waits = queuedAgain(action, stores.pending); // before its warnings are read
    return Failed{.error = done.error, .queuedAgain = waits, .warnings = failures.sentences()};
}

Result approve(const PendingAction& action, Stores stores)
{
    auto claimed = claim(action, stores.pending);
    if (const auto* ours = std::get_if<Claimed>(&claimed))
        return std::visit([](auto&& end) { return Result(std::forward<decltype(end)>(end)); }, run(*ours, stores));
    if (auto* unknown = std::get_if<UnknownTool>(&claimed))
        return std::move(*unknown);
    if (auto* refused = std::get_if<Refused>(&claimed))
        return std::move(*refused);
    return AlreadyGone{};
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
