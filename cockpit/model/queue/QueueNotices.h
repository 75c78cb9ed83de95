#pragma once

#include "cockpit/model/operations/Clock.h"
#include "core/policy/PendingStore.h"
#include "platform/desktop/Notifier.h"
#include "platform/desktop/Workspace.h"

#include <chrono>
#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace mervo {

/// What the desktop shows of the queue: a notification of new actions, at most once a minute, and the number of waiting
/// ones on the dock's entry. Main thread only.
class QueueNotices {
public:
    /// Everything outlives the object.
    QueueNotices(platform::Notifier& notifier, platform::Workspace& workspace, const Clock& clock);

    /// A single action that nothing else waits with is announced with its buttons, anything more as a number.
    void announce(const std::vector<PendingAction>& fresh, std::size_t total);
    /// Brings the number up to date and withdraws notifications of actions that wait no longer.
    void follow(const std::vector<PendingAction>& waiting);

    static bool isApprove(const std::string& buttonId);
    static bool isReject(const std::string& buttonId);
    /// The action that a notification on the screen shows, null when there is none under this id.
    const PendingAction* announced(const std::string& actionId) const;

private:
    void post(const PendingAction& action);

    platform::Notifier& notifier_;
    platform::Workspace& workspace_;
    const Clock& clock_;
    std::map<std::string, PendingAction> announced_; ///< by id
    std::optional<std::chrono::steady_clock::time_point> lastNotifiedAt_;
    std::size_t badge_ = 0; ///< the number last set
};

} // namespace mervo
