#pragma once

#include "cockpit/model/ApprovalListModel.h"
#include "cockpit/model/AutomationListModel.h"
#include "cockpit/model/CockpitSettings.h"
#include "cockpit/model/CockpitStores.h"
#include "cockpit/model/QuestionListModel.h"
#include "cockpit/model/QueueReader.h"
#include "cockpit/model/StatusIconDriver.h"
#include "cockpit/model/Surroundings.h"
#include "cockpit/model/Work.h"

#include <QObject>
#include <QTimer>
#include <QVariantList>

#include <map>
#include <optional>
#include <set>
#include <string>

namespace mervo {

/// The one object behind all views of the cockpit: mirrors the shared stores by looking at them every 3 s, and carries
/// out what the person decides.
///
/// Main thread only. What may take long (approved tools, the engine, writes to the database) runs elsewhere and comes
/// back through the event loop. Nothing here throws: what failed is said by `lastResult`.
/// The end of the model waits for the tools that run on an approval, for as long as they take: each has left the queue
/// and owes the trail its row. Approvals that still wait for a thread go back to the queue.
class CockpitModel final : public QObject {
    Q_OBJECT
    Q_PROPERTY(QString autonomyMode READ autonomyMode NOTIFY autonomyModeChanged) ///< "panic", "copilote" or "yolo"
    Q_PROPERTY(QString lastResult READ lastResult NOTIFY lastResultChanged) ///< empty: none
    Q_PROPERTY(int waitingCount READ waitingCount NOTIFY waitingCountChanged)
    /// "2 waiting files cannot be read; run mervo doctor"; empty: all can
    Q_PROPERTY(QString unreadable READ unreadable NOTIFY unreadableChanged)
    /// What else cannot be read or does not count at present, in the form of a result; empty: nothing
    Q_PROPERTY(QString trouble READ trouble NOTIFY troubleChanged)
    Q_PROPERTY(mervo::ApprovalListModel* approvals READ approvals CONSTANT)
    Q_PROPERTY(mervo::QuestionListModel* questions READ questions CONSTANT)
    Q_PROPERTY(mervo::AutomationListModel* automations READ automations CONSTANT)
    Q_PROPERTY(mervo::StatusIconDriver* icon READ icon CONSTANT)
    Q_PROPERTY(mervo::CockpitSettings* settings READ settings CONSTANT)

public:
    /// Reads everything once and starts the timer.
    explicit CockpitModel(const Surroundings& surroundings, QObject* parent = nullptr);
    ~CockpitModel() override;

    QString autonomyMode() const;
    QString lastResult() const { return lastResult_; }
    int waitingCount() const { return waitingCount_; }
    QString unreadable() const { return unreadable_; }
    QString trouble() const { return trouble_; }
    ApprovalListModel* approvals() { return &approvals_; }
    QuestionListModel* questions() { return &questions_; }
    AutomationListModel* automations() { return &automations_; }
    StatusIconDriver* icon() { return &icon_; }
    CockpitSettings* settings() { return &settings_; }

    const std::vector<AuditEntry>& audit() const { return audit_; } ///< the latest 25 rows, newest first
    const std::vector<PolicyRule>& rules() const { return rules_; }
    const std::vector<GmailAccount>& gmailAccounts() const { return gmailAccounts_; }

    /// Brings everything up to date; nothing is signalled where nothing changed.
    Q_INVOKABLE void reload();

    /// Runs exactly the action that the card with this key shows; a key that no card has does nothing.
    Q_INVOKABLE void approve(const QString& key);
    Q_INVOKABLE void reject(const QString& key, const QString& reason);
    Q_INVOKABLE void answer(const QString& questionId, const QString& text);

    Q_INVOKABLE void runAutomation(const QString& name);
    Q_INVOKABLE void stopAutomation(const QString& name);
    Q_INVOKABLE void openLive(const QString& name);
    Q_INVOKABLE void openLog(const QString& name);
    Q_INVOKABLE void setAutomationEnabled(const QString& name, bool enabled);
    Q_INVOKABLE void deleteAutomation(const QString& name);
    /// The prompt as a list of {kind: "heading"|"bullet"|"paragraph"|"code", level, text}.
    Q_INVOKABLE QVariantList promptBlocks(const QString& name) const;

    Q_INVOKABLE void openInMail(const QString& key);
    Q_INVOKABLE void openSupport();
    /// Raises as well as lowers: a person's own switch. A word that is no mode does nothing.
    Q_INVOKABLE void setAutonomy(const QString& mode);
    void addRule(const PolicyRule& rule);
    void setRuleEnabled(const PolicyRule& rule, bool enabled);
    void removeRule(const PolicyRule& rule);

    /// The password goes to the keychain first; where that fails nothing else changes, and `lastResult` says why.
    Q_INVOKABLE void addIMAPAccount(const QString& mailAccountName, const QString& email, const QString& password);
    Q_INVOKABLE void removeIMAPAccount(const QString& email);
    Q_INVOKABLE void refreshGmailAccounts();
    Q_INVOKABLE void setLaunchAtLogin(bool on);
Q_SIGNALS:
    void autonomyModeChanged();
    void lastResultChanged();
    void waitingCountChanged();
    void unreadableChanged();
    void troubleChanged();
    void auditChanged();
    void rulesChanged();
    void gmailAccountsChanged();
    /// The person clicked a notification: the cockpit is to come to the front.
    void activationRequested();

private:
    void refresh(bool initial);
    void showQueue();
    void recordEndedActs();
    void readDatabase();
    void showTrouble();
    void readAutomations();
    void updateCounts();
    void refreshIcon();
    StatusIconState::Attention attention() const;
    void setLastResult(const std::string& text);
    void tellUnless(bool isOpened, const std::string& what);
    void notify(const std::vector<PendingAction>& fresh, std::size_t total);
    void announce(const PendingAction& action);
    void withdrawDecided();
    void respond(const std::string& actionId, const std::string& context);

    void approveAction(const PendingAction& action);
    void finishApproval(const PendingAction& action, const Approval::Run& end);
    void rejectAction(const PendingAction& action, const std::string& reason);

    void logAccount(const char* action, const AuditLog::Details& details);
    const Automation* automation(const QString& name) const;
    void callEngine(const std::string& name, std::function<void(AutomationEngine&)> call, std::function<void()> then);
    /// A write whose failure is told as that of the task: "the answer".
    void write(const std::string& task, std::function<void(CockpitStores::Open&)> work);
    void writeRules(std::function<void(CockpitStores::Open&)> change);

    Surroundings outside_;
    QueueReader queue_;
    CockpitStores stores_;
    StatusIconDriver icon_;
    ApprovalListModel approvals_;
    QuestionListModel questions_;
    AutomationListModel automations_;
    CockpitSettings settings_;
    Work work_;
    QTimer timer_;

    std::vector<PendingAction> pending_; ///< what waits, without what a verdict is being carried out for
    std::vector<FeedbackItem> openQuestions_;
    std::vector<AuditEntry> audit_;
    std::vector<PolicyRule> rules_;
    std::vector<Automation> listed_;
    std::vector<GmailAccount> gmailAccounts_;
    QString lastResult_;
    QString unreadable_, trouble_;
    bool isBlind_ = false; ///< what the trouble says keeps the cockpit from seeing what waits and what was done
    std::string databaseFailure_; ///< of the last reading; empty: it worked
    std::optional<std::chrono::steady_clock::time_point> unreadSince_;
    int waitingCount_ = 0;
    std::size_t badge_ = 0; ///< the number last put on the dock's entry
    int busyCount_ = 0; ///< approved tools and starts of automations in flight here
    std::set<std::string> knownIds_; ///< of the actions seen at the last refresh
    std::set<std::string> deciding_, answering_; ///< ids whose verdict or answer is being written
    std::map<std::string, PendingAction> announced_; ///< what a notification on the screen offers to decide, by id
    std::optional<std::chrono::steady_clock::time_point> lastNotifiedAt_;
};

} // namespace mervo
