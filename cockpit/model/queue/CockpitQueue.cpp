#include "cockpit/model/queue/CockpitQueue.h"

#include "cockpit/model/queue/ActionPresentation.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace mervo {

CockpitQueue::CockpitQueue(const Needs& needs, QObject* parent)
    : QObject(parent)
    , outside_(needs)
    , reader_(PendingStore().dir())
    , notices_(needs.notifier, needs.workspace, needs.clock)
    , verdicts_(needs.operations)
{
    connect(&verdicts_, &Verdicts::reloadRequested, this, &CockpitQueue::reloadRequested);
    connect(&verdicts_, &Verdicts::rejectingChanged, this, [this] {
        show();
        Q_EMIT waitingChanged();
    });
    outside_.notifier.onResponse = [this](const auto& button, const auto& action) { respond(button, action); };
}

CockpitQueue::~CockpitQueue()
{
    outside_.notifier.onResponse = nullptr;
}

void CockpitQueue::refresh()
{
    const bool isFirst = !knownIds_;
    if (isFirst)
        knownIds_.emplace();
    std::vector<PendingAction> fresh;
    if (reader_.refresh()) {
        fresh = takeFresh();
        show();
    } else {
        list_.showAges(outside_.clock.wall());
    }
    showUnreadable();
    if (!isFirst && !fresh.empty())
        notices_.announce(fresh, waiting_.size());
}

std::vector<PendingAction> CockpitQueue::takeFresh()
{
    std::vector<PendingAction> fresh;
    std::set<std::string> ids;
    for (const PendingAction& action : reader_.actions()) {
        if (!knownIds_->contains(action.id))
            fresh.push_back(action);
        ids.insert(action.id);
    }
    knownIds_ = std::move(ids);
    return fresh;
}

void CockpitQueue::show()
{
    waiting_.clear();
    std::ranges::copy_if(reader_.actions(), std::back_inserter(waiting_),
        [this](const PendingAction& action) { return !verdicts_.isRejecting(action.id); });
    list_.show(waiting_, outside_.clock.wall());
    notices_.follow(waiting_);
}

void CockpitQueue::showUnreadable()
{
    const std::size_t files = reader_.damaged();
    const std::string text = std::to_string(files) + " waiting file" + (files == 1 ? "" : "s");
    const QString now = files == 0 ? QString() : QString::fromStdString(text + " cannot be read; run mervo doctor");
    if (std::exchange(unreadable_, now) != now)
        Q_EMIT unreadableChanged();
}

void CockpitQueue::approve(const QString& key)
{
    if (const PendingAction* shown = list_.action(key))
        verdicts_.approve(PendingAction(*shown));
}

void CockpitQueue::reject(const QString& key, const QString& reason)
{
    if (const PendingAction* shown = list_.action(key))
        verdicts_.reject(PendingAction(*shown), reason.toStdString());
}

void CockpitQueue::openInMail(const QString& key)
{
    const PendingAction* shown = list_.action(key);
    if (shown != nullptr && !outside_.workspace.openUrl(ActionPresentation::mailtoUrl(shown->args)))
        outside_.operations.lastResult.showNotOpened("Open in Mail");
}

/// Decides what the notification showed and nothing else: an action that has become another one under its id is for the
/// person to look at.
void CockpitQueue::respond(const std::string& buttonId, const std::string& actionId)
{
    if (!QueueNotices::isApprove(buttonId) && !QueueNotices::isReject(buttonId)) {
        Q_EMIT activationRequested();
        return;
    }
    const auto action = PendingStore().load(actionId);
    if (!action || verdicts_.isRejecting(actionId))
        return;
    const PendingAction* announced = notices_.announced(actionId);
    if (announced == nullptr || *announced != *action) {
        Q_EMIT activationRequested();
    } else if (QueueNotices::isApprove(buttonId)) {
        verdicts_.approve(*action);
    } else {
        verdicts_.reject(*action, "rejected from notification");
    }
}

} // namespace mervo
