/// What the cockpit model does on a person's verdict, answer or change of a rule.
#include "cockpit/model/ActionPresentation.h"
#include "cockpit/model/CockpitModel.h"
#include "core/foundation/Text.h"
#include "core/policy/HarnessRunner.h"

#include <exception>
#include <memory>

namespace mervo {

namespace {

constexpr auto kActor = "cockpit";
constexpr std::size_t kAnswerLimit = 120; ///< characters of an answer in the trail

/// An action taken from the queue and not yet run. One that never comes to run goes back.
class ClaimedRun {
public:
    ClaimedRun(Approval::Claimed claimed, CockpitStores& stores)
        : claimed_(std::move(claimed))
        , stores_(stores)
    {
    }
    ClaimedRun(const ClaimedRun&) = delete;
    ClaimedRun& operator=(const ClaimedRun&) = delete;
    ~ClaimedRun()
    {
        if (hasBegun_)
            return;
        try {
            PendingStore().save(claimed_.action);
        } catch (const std::exception& failure) {
            stores_.writing()->audit.log(
                kActor, claimed_.action.tool, std::nullopt, claimed_.action.args, "error", failure.what());
        }
    }

    Approval::Run operator()()
    {
        hasBegun_ = true;
        const PendingStore pending; // made anew: its folder may have gone in the meantime
        const auto open = stores_.writing();
        return Approval::run(claimed_, {pending, open->audit, open->asks});
    }

private:
    Approval::Claimed claimed_;
    CockpitStores& stores_;
    bool hasBegun_ = false;
};

void logHuman(
    CockpitStores::Open& stores, const char* action, const AuditLog::Details& details, const char* reason = "human")
{
    stores.audit.log(kActor, action, std::nullopt, details, "executed", reason);
}

/// Of an action whose file this cockpit did not remove.
std::string notTaken(const PendingAction& action)
{
    return PendingStore().load(action.id) ? "❌ " + action.tool + " - could not be taken from the queue"
                                          : action.tool + " - no longer waiting";
}

std::string utf8(const QString& text)
{
    return text.toStdString();
}

} // namespace

void CockpitModel::approve(const QString& key)
{
    if (const PendingAction* shown = approvals_.action(key))
        approveAction(PendingAction(*shown));
}

void CockpitModel::approveAction(const PendingAction& action)
{
    const PendingStore pending;
    auto claim = Approval::claim(action, pending);
    if (const auto* unknown = std::get_if<Approval::UnknownTool>(&claim))
        return setLastResult(unknown->text);
    if (const auto* refused = std::get_if<Approval::Refused>(&claim))
        return setLastResult("❌ " + refused->text);
    if (std::holds_alternative<Approval::AlreadyGone>(claim)) {
        setLastResult(notTaken(action));
        return reload();
    }
    setLastResult("⏳ " + action.tool + " - running...");
    ++busyCount_;
    auto run = std::make_unique<ClaimedRun>(std::move(std::get<Approval::Claimed>(claim)), stores_);
    reload();
    work_.approve(
        *this, [run = std::move(run)] { return (*run)(); },
        [this, action](const Approval::Run& end) { finishApproval(action, end); });
}

/// What the stores could not do comes before what the tool said, and counts as a failure: an act without its row.
void CockpitModel::finishApproval(const PendingAction& action, const Approval::Run& end)
{
    --busyCount_;
    if (const auto* done = std::get_if<Approval::Executed>(&end)) {
        const std::string warnings = Text::join(done->warnings, "; ");
        setLastResult(warnings.empty() ? "✅ " + action.tool + " - " + done->output
                                       : "❌ " + action.tool + " ran, but " + warnings + " - " + done->output);
    } else {
        const auto& failed = std::get<Approval::Failed>(end);
        const std::string warnings = Text::join(failed.warnings, "; ");
        setLastResult("❌ " + action.tool + " - " + failed.error + (warnings.empty() ? "" : " (" + warnings + ")"));
    }
    reload();
}

void CockpitModel::reject(const QString& key, const QString& reason)
{
    if (const PendingAction* shown = approvals_.action(key))
        rejectAction(PendingAction(*shown), utf8(reason));
}

void CockpitModel::rejectAction(const PendingAction& action, const std::string& reason)
{
    deciding_.insert(action.id);
    showQueue();
    updateCounts();
    refreshIcon();
    write("rejecting " + action.tool, [this, action, reason](CockpitStores::Open& open) {
        const bool removed = Approval::reject(action, reason, {PendingStore(), open.audit, open.asks});
        work_.come(*this, [this, action, result = removed ? "🚫 rejected " + action.tool : notTaken(action)] {
            deciding_.erase(action.id);
            reload();
            showQueue(); // also where its file is still the same
            updateCounts();
            refreshIcon();
            setLastResult(result);
        });
    });
}

void CockpitModel::answer(const QString& questionId, const QString& text)
{
    const std::string id = utf8(questionId), whole = utf8(text), answer(Text::trimmed(whole));
    if (answer.empty() || !answering_.insert(id).second)
        return;
    std::erase_if(openQuestions_, [&](const FeedbackItem& item) { return item.id == id; });
    questions_.show(openQuestions_);
    updateCounts();
    refreshIcon();
    write("answering", [this, id, answer](CockpitStores::Open& open) {
        open.feedback.answer(id, answer);
        logHuman(
            open, "ask_answer", {{"id", id}, {"answer", std::string(Text::firstCharacters(answer, kAnswerLimit))}});
        work_.come(*this, [this, id] {
            answering_.erase(id);
            reload();
        });
    });
}

void CockpitModel::setAutonomy(const QString& word)
{
    const auto mode = mervo::autonomyMode(utf8(word));
    if (!mode || !settings_.setAutonomyMode(*mode))
        return;
    refreshIcon();
    write("changing the level", [mode = std::string(rawValue(*mode))](CockpitStores::Open& open) {
        logHuman(open, "set_autonomy", {{"mode", mode}}, "human_toggle");
    });
}

void CockpitModel::write(const std::string& task, std::function<void(CockpitStores::Open&)> work)
{
    stores_.write(std::move(work), [this, task](const std::string& why) {
        work_.come(*this, [this, text = "❌ " + task + " - " + why] { setLastResult(text); });
    });
}

void CockpitModel::writeRules(std::function<void(CockpitStores::Open&)> change)
{
    write("changing the rules", [this, change = std::move(change)](CockpitStores::Open& open) {
        change(open);
        work_.come(*this, [this] { readDatabase(); });
    });
}

void CockpitModel::addRule(const PolicyRule& rule)
{
    writeRules([rule](CockpitStores::Open& open) {
        open.rules.add(rule);
        logHuman(open, "rule_add",
            {{"id", rule.id}, {"tool", rule.toolPattern}, {"decision", std::string(rawValue(rule.decision))}});
    });
}

void CockpitModel::setRuleEnabled(const PolicyRule& rule, bool enabled)
{
    writeRules([id = rule.id, enabled](CockpitStores::Open& open) {
        open.rules.setEnabled(id, enabled);
        logHuman(open, enabled ? "rule_enable" : "rule_disable", {{"id", id}});
    });
}

void CockpitModel::removeRule(const PolicyRule& rule)
{
    writeRules([rule](CockpitStores::Open& open) {
        open.rules.remove(rule.id);
        logHuman(open, "rule_remove", {{"id", rule.id}, {"decision", std::string(rawValue(rule.decision))}});
    });
}

void CockpitModel::openInMail(const QString& key)
{
    if (const PendingAction* shown = approvals_.action(key))
        tellUnless(outside_.workspace.openUrl(ActionPresentation::mailtoUrl(shown->args)), "Open in Mail");
}

} // namespace mervo
