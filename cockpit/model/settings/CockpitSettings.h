#pragma once

#include "cockpit/model/operations/Operations.h"
#include "core/foundation/HarnessConfig.h"
#include "platform/desktop/LoginItem.h"
#include "platform/files.h"

#include <QObject>
#include <QString>

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace mervo {

/// The configuration as the cockpit's panes show and change it, and the start at login. Each change sets its one field
/// in the current file, under the home's lock, so that fields which another process has written are kept; a change that
/// fails is told by the last result. Main thread only; waits up to 2 s for the lock.
class CockpitSettings final : public QObject {
    Q_OBJECT
    Q_PROPERTY(QString autonomyMode READ autonomyWord NOTIFY autonomyModeChanged) ///< "panic", "copilote" or "yolo"
    Q_PROPERTY(QString rondelHome READ rondelHome CONSTANT)
    Q_PROPERTY(QString terminalApp READ terminalApp WRITE setTerminalApp NOTIFY changed) ///< empty: not set
    Q_PROPERTY(QString notifyEmail READ notifyEmail WRITE setNotifyEmail NOTIFY changed)
    Q_PROPERTY(QString notifyIMessageHandle READ notifyIMessageHandle WRITE setNotifyIMessageHandle NOTIFY changed)
    Q_PROPERTY(QString askChannel READ askChannel WRITE setAskChannel NOTIFY changed)
    Q_PROPERTY(QString askCleanup READ askCleanup WRITE setAskCleanup NOTIFY changed)
    Q_PROPERTY(bool launchAtLogin READ launchAtLogin NOTIFY changed)

public:
    /// Everything outlives the object.
    struct Needs {
        Operations& operations;
        platform::LoginItem& loginItem;
    };
    explicit CockpitSettings(const Needs& needs, QObject* parent = nullptr);

    AutonomyMode autonomyMode() const { return mirror_.autonomyMode; }
    QString autonomyWord() const;
    const std::vector<IMAPArchiveAccount>& imapAccounts() const { return mirror_.imapAccounts; }
    QString rondelHome() const;
    QString terminalApp() const;
    QString notifyEmail() const;
    QString notifyIMessageHandle() const;
    QString askChannel() const;
    QString askCleanup() const;
    bool launchAtLogin() const { return launchAtLogin_; }
    /// Why the file is ignored, as a sentence; empty when it is not.
    const std::string& complaint() const { return complaint_; }

    void setTerminalApp(const QString& application);
    void setNotifyEmail(const QString& address);
    void setNotifyIMessageHandle(const QString& handle);
    /// An unknown word stores the default.
    void setAskChannel(const QString& channel);
    void setAskCleanup(const QString& cleanup);

    /// Raises as well as lowers: a person's own switch. A word that is no mode does nothing.
    Q_INVOKABLE void setAutonomy(const QString& mode);
    Q_INVOKABLE void setLaunchAtLogin(bool on);
    /// True when the change was saved; otherwise nothing has changed.
    bool setImapAccounts(const std::function<void(std::vector<IMAPArchiveAccount>&)>& change);

    /// Reads again what other processes may change: the mode and the archive's accounts.
    void refresh();

Q_SIGNALS:
    void changed();
    void autonomyModeChanged();
    void imapAccountsChanged();
    /// The person has set the mode here.
    void autonomySet();

private:
    bool store(const std::function<void(HarnessConfig&)>& change);
    void showLaunchAtLogin();

    Needs outside_;
    HarnessConfig mirror_;
    std::optional<platform::FileStamp> complainedOf_; ///< the file that the complaint is about, once it is settled
    std::string complaint_;
    bool launchAtLogin_ = false;
};

} // namespace mervo
