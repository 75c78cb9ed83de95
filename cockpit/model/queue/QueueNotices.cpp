#include "cockpit/model/queue/QueueNotices.h"

#include "cockpit/model/shown/ShownText.h"

#include <algorithm>
#include <fmt/format.h>
#include <utility>

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

QueueNotices::QueueNotices(platform::Notifier& notifier, platform::Workspace& workspace, const Clock& clock)
    : notifier_(notifier)
    , workspace_(workspace)
    , clock_(clock)
{
}

void QueueNotices::announce(const std::vector<PendingAction>& fresh, std::size_t total)
{
    const auto now = clock_.steady();
    if (lastNotifiedAt_ && now - *lastNotifiedAt_ < kWindow)
        return;
    lastNotifiedAt_ = now;
    if (fresh.size() == 1 && total == 1)
        return post(fresh.front());
    notifier_.remove(kSummary);
    notifier_.post({.id = kSummary,
        .title = fmt::format("{} actions to approve", total),
        .body = "Open Mervo to review the queue.",
        .actions = {},
        .context = {}});
}

void QueueNotices::post(const PendingAction& action)
{
    announced_[action.id] = action;
    notifier_.post({.id = noticeOf(action.id),
        .title = "Approve " + ShownText::line(action.tool).toStdString() + "?",
        .body = ShownText::block(action.preview.value_or(action.summary), kBodyLimit).toStdString(),
        .actions = {{.id = kApprove, .title = "Approve"}, {.id = kReject, .title = "Reject", .isDestructive = true}},
        .context = action.id});
}

void QueueNotices::follow(const std::vector<PendingAction>& waiting)
{
    std::erase_if(announced_, [&](const auto& item) {
        const bool waits = std::ranges::find(waiting, item.first, &PendingAction::id) != waiting.end();
        if (!waits)
            notifier_.remove(noticeOf(item.first));
        return !waits;
    });
    if (std::exchange(badge_, waiting.size()) != waiting.size())
        workspace_.setBadge(waiting.empty() ? std::string() : std::to_string(waiting.size()));
}

bool QueueNotices::isApprove(const std::string& buttonId)
{
    return buttonId == kApprove;
}

bool QueueNotices::isReject(const std::string& buttonId)
{
    return buttonId == kReject;
}

const PendingAction* QueueNotices::announced(const std::string& actionId) const
{
    const auto found = announced_.find(actionId);
    return found == announced_.end() ? nullptr : &found->second;
}

} // namespace mervo
