#include "cockpit/model/queue/Verdicts.h"

#include "core/foundation/Text.h"

#include <exception>
#include <memory>
#include <utility>

namespace mervo {

namespace {

using Kind = StatusMessage::Kind;

constexpr auto kActor = "cockpit";

/// An action taken from the queue and not yet run. If it never comes to run, it goes back.
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

} // namespace

Verdicts::Verdicts(Operations& operations, QObject* parent)
    : QObject(parent)
    , operations_(operations)
{
}

void Verdicts::approve(const PendingAction& action)
{
    auto claim = Approval::claim(action, PendingStore());
    if (const auto* unknown = std::get_if<Approval::UnknownTool>(&claim))
        return operations_.lastResult.show(Kind::Note, unknown->text);
    if (const auto* refused = std::get_if<Approval::Refused>(&claim))
        return operations_.lastResult.show(Kind::Failed, refused->text);
    if (std::holds_alternative<Approval::AlreadyGone>(claim)) {
        showNotTaken(action);
        Q_EMIT reloadRequested();
        return;
    }
    operations_.lastResult.show(Kind::Running, action.tool + " - running...");
    ++running_;
    auto run = std::make_unique<ClaimedRun>(std::move(std::get<Approval::Claimed>(claim)), operations_.stores);
    Q_EMIT reloadRequested();
    operations_.work.approve(
        *this, [run = std::move(run)] { return (*run)(); },
        [this, action](const Approval::Run& end) { finish(action, end); });
}

/// What the stores could not do comes before what the tool said, and counts as a failure: an act without its row.
void Verdicts::finish(const PendingAction& action, const Approval::Run& end)
{
    --running_;
    if (const auto* done = std::get_if<Approval::Executed>(&end)) {
        const std::string warnings = Text::join(done->warnings, "; ");
        if (warnings.empty()) {
            operations_.lastResult.show(Kind::Done, action.tool + " - " + done->output);
        } else {
            operations_.lastResult.show(Kind::Failed, action.tool + " ran, but " + warnings + " - " + done->output);
        }
    } else {
        const auto& failed = std::get<Approval::Failed>(end);
        const std::string warnings = Text::join(failed.warnings, "; ");
        operations_.lastResult.show(
            Kind::Failed, action.tool + " - " + failed.error + (warnings.empty() ? "" : " (" + warnings + ")"));
    }
    Q_EMIT reloadRequested();
}

void Verdicts::reject(const PendingAction& action, const std::string& reason)
{
    rejecting_.insert(action.id);
    Q_EMIT rejectingChanged();
    operations_.write("rejecting " + action.tool, [this, action, reason](CockpitStores::Open& open) {
        const bool removed = Approval::reject(action, reason, {PendingStore(), open.audit, open.asks});
        Work::come(*this, [this, action, removed] {
            rejecting_.erase(action.id);
            Q_EMIT reloadRequested();
            Q_EMIT rejectingChanged(); // also where its file is still the same
            if (removed) {
                operations_.lastResult.show(Kind::Rejected, "rejected " + action.tool);
            } else {
                showNotTaken(action);
            }
        });
    });
}

/// Of an action whose file this cockpit did not remove.
void Verdicts::showNotTaken(const PendingAction& action)
{
    if (PendingStore().load(action.id)) {
        operations_.lastResult.show(Kind::Failed, action.tool + " - could not be taken from the queue");
    } else {
        operations_.lastResult.show(Kind::Note, action.tool + " - no longer waiting");
    }
}

} // namespace mervo
