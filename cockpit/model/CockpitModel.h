#pragma once

#include "cockpit/model/Surroundings.h"
#include "cockpit/model/archive/CockpitArchive.h"
#include "cockpit/model/automations/CockpitAutomations.h"
#include "cockpit/model/icon/StatusIconDriver.h"
#include "cockpit/model/operations/Operations.h"
#include "cockpit/model/questions/CockpitQuestions.h"
#include "cockpit/model/queue/CockpitQueue.h"
#include "cockpit/model/rules/CockpitRules.h"
#include "cockpit/model/settings/CockpitSettings.h"

#include <QObject>
#include <QTimer>

#include <chrono>
#include <optional>
#include <string>
#include <vector>

namespace mervo {

/// The one object behind all views of the cockpit. Its parts show the shared stores and carry out what the person
/// decides; it reads the stores for them every 3 s, and says what the status icon shows.
///
/// Main thread only. What may take long (approved tools, operations on automations, writes to the database) runs
/// elsewhere and comes back through the event loop. Nothing here throws: `lastResult` says what failed.
/// Destruction waits for the tools that run on an approval, for as long as they take: each has left the queue and owes
/// the trail its row. Approvals that still wait for a thread go back to the queue.
class CockpitModel final : public QObject {
    Q_OBJECT
    Q_PROPERTY(mervo::StatusMessage* lastResult READ lastResult CONSTANT)
    /// What cannot be read or does not count at present, apart from files of the queue. `Failed`: the cockpit does not
    /// see all that waits or was done.
    Q_PROPERTY(mervo::StatusMessage* trouble READ trouble CONSTANT)
    Q_PROPERTY(int waitingCount READ waitingCount NOTIFY waitingCountChanged) ///< actions and questions
    Q_PROPERTY(mervo::CockpitQueue* queue READ queue CONSTANT)
    Q_PROPERTY(mervo::CockpitQuestions* questions READ questions CONSTANT)
    Q_PROPERTY(mervo::CockpitAutomations* automations READ automations CONSTANT)
    Q_PROPERTY(mervo::CockpitSettings* settings READ settings CONSTANT)
    Q_PROPERTY(mervo::CockpitArchive* archive READ archive CONSTANT)
    Q_PROPERTY(mervo::StatusIconDriver* icon READ icon CONSTANT)

public:
    /// Reads everything once and starts the timer.
    explicit CockpitModel(const Surroundings& surroundings, QObject* parent = nullptr);
    ~CockpitModel() override;
    Q_DISABLE_COPY_MOVE(CockpitModel)

    StatusMessage* lastResult() { return &operations_.lastResult; }
    StatusMessage* trouble() { return &trouble_; }
    int waitingCount() const { return waitingCount_; }
    CockpitQueue* queue() { return &queue_; }
    CockpitQuestions* questions() { return &questions_; }
    CockpitAutomations* automations() { return &automations_; }
    CockpitSettings* settings() { return &settings_; }
    CockpitArchive* archive() { return &archive_; }
    CockpitRules* rules() { return &rules_; }
    StatusIconDriver* icon() { return &icon_; }

    const std::vector<AuditEntry>& audit() const { return audit_; } ///< the latest 25 rows, newest first

    /// Brings everything up to date; nothing is signalled where nothing changed.
    Q_INVOKABLE void reload();
    Q_INVOKABLE void openSupport();

Q_SIGNALS:
    void waitingCountChanged();
    void auditChanged();
    /// The person clicked a notification: the cockpit is to come to the front.
    void activationRequested();

private:
    void connectParts();
    void recordEndedActs();
    void readDatabase();
    void showTrouble();
    void showSummary();
    void showIcon();
    StatusIconState::Attention attention() const;

    Surroundings outside_;
    Operations operations_;
    StatusMessage trouble_;
    CockpitQueue queue_;
    CockpitQuestions questions_;
    CockpitAutomations automations_;
    CockpitSettings settings_;
    CockpitArchive archive_;
    CockpitRules rules_;
    StatusIconDriver icon_;
    QTimer timer_;

    std::vector<AuditEntry> audit_;
    std::string databaseFailure_; ///< of the last reading; empty: it worked
    std::optional<std::chrono::steady_clock::time_point> unreadSince_;
    int waitingCount_ = 0;
};

} // namespace mervo
