#pragma once

#include "cockpit/model/operations/Clock.h"
#include "cockpit/model/operations/Operations.h"
#include "cockpit/model/queue/ApprovalListModel.h"
#include "cockpit/model/queue/QueueNotices.h"
#include "cockpit/model/queue/QueueReader.h"
#include "cockpit/model/queue/Verdicts.h"

#include <QObject>
#include <QString>

#include <optional>
#include <set>
#include <string>
#include <system_error>
#include <vector>

namespace mervo {

/// The actions that wait for the person, and the person's verdicts. Main thread only.
class CockpitQueue final : public QObject {
    Q_OBJECT
    Q_PROPERTY(mervo::ApprovalListModel* list READ list CONSTANT)
    /// "2 waiting files cannot be read; run mervo doctor"; empty: all can
    Q_PROPERTY(QString unreadable READ unreadable NOTIFY unreadableChanged)

public:
    /// Everything outlives the object.
    struct Needs {
        Operations& operations;
        platform::Notifier& notifier;
        platform::Workspace& workspace;
        const Clock& clock;
    };
    explicit CockpitQueue(const Needs& needs, QObject* parent = nullptr);
    ~CockpitQueue() override;
    Q_DISABLE_COPY_MOVE(CockpitQueue)

    ApprovalListModel* list() { return &list_; }
    QString unreadable() const { return unreadable_; }

    /// What waits, without what is being rejected.
    const std::vector<PendingAction>& waiting() const { return waiting_; }
    bool isWorking() const { return verdicts_.isRunning(); }
    /// Why the folder of the queue could not be read.
    std::error_code failure() const { return reader_.failure(); }

    /// Reads the folder again. What has come since the last call is announced; at the first call, nothing is.
    void refresh();

    /// Runs exactly the action that the card with this key shows; a key that no card has does nothing.
    Q_INVOKABLE void approve(const QString& key);
    Q_INVOKABLE void reject(const QString& key, const QString& reason);
    Q_INVOKABLE void openInMail(const QString& key);

Q_SIGNALS:
    void unreadableChanged();
    /// `waiting` changed between two calls of `refresh`.
    void waitingChanged();
    void reloadRequested();
    /// The person clicked a notification: the cockpit is to come to the front.
    void activationRequested();

private:
    std::vector<PendingAction> takeFresh();
    void show();
    void showUnreadable();
    void respond(const std::string& buttonId, const std::string& actionId);

    Needs outside_;
    QueueReader reader_;
    QueueNotices notices_;
    Verdicts verdicts_;
    ApprovalListModel list_;
    std::vector<PendingAction> waiting_;
    std::optional<std::set<std::string>> knownIds_; ///< of the actions seen at the last refresh; nothing before it
    QString unreadable_;
};

} // namespace mervo
