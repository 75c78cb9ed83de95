/// The cockpit model's notifications on the desktop.
#include "cockpit/model/CockpitModel.h"
#include "cockpit/model/ShownText.h"

#include <algorithm>
#include <fmt/format.h>

namespace mervo {

namespace {

constexpr std::chrono::seconds kWindow(60); ///< between two notifications
constexpr std::size_t kBodyLimit = 1'000; ///< characters
constexpr auto kSummary = "mervo-summary";
constexpr auto kApprove = "APPROVE";
constexpr auto kReject = "REJECT";

std::string noticeOf(const std::string& actionId)
{
    return "mervo-action-" + actionId;
}

} // namespace

void CockpitModel::notify(const std::vector<PendingAction>& fresh, std::size_t total)
{
    const auto now = outside_.clock.steady();
    if (lastNotifiedAt_ && now - *lastNotifiedAt_ < kWindow)
        return;
    lastNotifiedAt_ = now;
    if (fresh.size() == 1 && total == 1)
        return announce(fresh.front());
    outside_.notifier.remove(kSummary);
    outside_.notifier.post({.id = kSummary,
        .title = fmt::format("{} actions to approve", total),
        .body = "Open Mervo to review the queue.",
        .actions = {},
        .context = {}});
}

void CockpitModel::announce(const PendingAction& action)
{
    announced_[action.id] = action;
    outside_.notifier.post({.id = noticeOf(action.id),
        .title = "Approve " + ShownText::line(action.tool).toStdString() + "?",
        .body = ShownText::block(action.preview.value_or(action.summary), kBodyLimit).toStdString(),
        .actions = {{kApprove, "Approve", false}, {kReject, "Reject", true}},
        .context = action.id});
}

/// What no longer waits needs no decision: its notification goes.
void CockpitModel::withdrawDecided()
{
    std::erase_if(announced_, [this](const auto& item) {
        const bool waits = std::ranges::find(pending_, item.first, &PendingAction::id) != pending_.end();
        if (!waits)
            outside_.notifier.remove(noticeOf(item.first));
        return !waits;
    });
}

/// Decides what the notification showed and nothing else: an action that has become another one under its id is for the
/// person to look at.
void CockpitModel::respond(const std::string& actionId, const std::string& context)
{
    if (actionId != kApprove && actionId != kReject) {
        Q_EMIT activationRequested();
        return;
    }
    const auto action = PendingStore().load(context);
    if (!action || deciding_.contains(context))
        return;
    const auto announced = announced_.find(context);
    if (announced == announced_.end() || announced->second != *action)
        Q_EMIT activationRequested();
    else if (actionId == kApprove)
        approveAction(*action);
    else
        rejectAction(*action, "rejected from notification");
}

} // namespace mervo
