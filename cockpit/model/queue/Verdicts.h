#pragma once

#include "cockpit/model/operations/Operations.h"
#include "core/approval/Approval.h"

#include <QObject>

#include <set>
#include <string>

namespace mervo {

/// Carries out a person's verdicts on queued actions. Approved tools run off the main thread, and rejections on the
/// thread of writes. Main thread only.
class Verdicts final : public QObject {
    Q_OBJECT

public:
    explicit Verdicts(Operations& operations, QObject* parent = nullptr);

    /// Runs exactly this action, if it still waits.
    void approve(const PendingAction& action);
    void reject(const PendingAction& action, const std::string& reason);

    bool isRejecting(const std::string& actionId) const { return rejecting_.contains(actionId); }
    bool isRunning() const { return running_ > 0; } ///< an approved tool

Q_SIGNALS:
    /// `isRejecting` has another answer for some action.
    void rejectingChanged();
    /// The queue and the stores were changed, and are to be read again.
    void reloadRequested();

private:
    void finish(const PendingAction& action, const Approval::Run& end);
    void showNotTaken(const PendingAction& action);

    Operations& operations_;
    std::set<std::string> rejecting_; ///< ids of actions whose rejection is being written
    int running_ = 0; ///< approved tools
};

} // namespace mervo
