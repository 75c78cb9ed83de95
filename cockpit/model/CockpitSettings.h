#pragma once

#include "core/foundation/HarnessConfig.h"
#include "platform/files.h"

#include <QObject>
#include <QString>

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace mervo {

/// The configuration as the cockpit's panes show and change it. Each change sets its one field in the file as it stands
/// by then, under the home's lock, so that what another process wrote meanwhile is kept. Main thread only; waits for
/// the lock up to 2 s.
class CockpitSettings final : public QObject {
    Q_OBJECT
    Q_PROPERTY(QString rondelHome READ rondelHome CONSTANT)
    Q_PROPERTY(QString terminalApp READ terminalApp WRITE setTerminalApp NOTIFY changed) ///< empty: not set
    Q_PROPERTY(QString notifyEmail READ notifyEmail WRITE setNotifyEmail NOTIFY changed)
    Q_PROPERTY(QString notifyIMessageHandle READ notifyIMessageHandle WRITE setNotifyIMessageHandle NOTIFY changed)
    Q_PROPERTY(QString askChannel READ askChannel WRITE setAskChannel NOTIFY changed)
    Q_PROPERTY(QString askCleanup READ askCleanup WRITE setAskCleanup NOTIFY changed)
    Q_PROPERTY(bool launchAtLogin READ launchAtLogin NOTIFY changed)

public:
    explicit CockpitSettings(QObject* parent = nullptr);

    AutonomyMode autonomyMode() const { return mirror_.autonomyMode; }
    const std::vector<IMAPArchiveAccount>& imapAccounts() const { return mirror_.imapAccounts; }
    QString rondelHome() const;
    QString terminalApp() const;
    QString notifyEmail() const;
    QString notifyIMessageHandle() const;
    QString askChannel() const;
    QString askCleanup() const;
    bool launchAtLogin() const { return launchAtLogin_; }
    /// Why the file counts for nothing, as a sentence; empty when it counts.
    const std::string& complaint() const { return complaint_; }

    void setTerminalApp(const QString& application);
    void setNotifyEmail(const QString& address);
    void setNotifyIMessageHandle(const QString& handle);
    /// A word that is no channel, or no clean-up, stores the default.
    void setAskChannel(const QString& channel);
    void setAskCleanup(const QString& cleanup);

    /// True when it was saved; otherwise nothing has changed.
    bool setAutonomyMode(AutonomyMode mode);
    bool setImapAccounts(const std::function<void(std::vector<IMAPArchiveAccount>&)>& change);
    void showLaunchAtLogin(bool on);

    /// Takes over what other processes may change under the cockpit's eyes: the mode and the archive's accounts.
    void refresh();

Q_SIGNALS:
    void changed();
    void autonomyModeChanged();
    void imapAccountsChanged();
    /// The file could not be written, and stands as it was.
    void notSaved(const QString& why);
    /// It was written, and the person should hear something of the old one.
    void noticed(const QString& notice);

private:
    bool store(const std::function<void(HarnessConfig&)>& change);

    HarnessConfig mirror_;
    std::optional<platform::FileStamp> complainedOf_; ///< the file that the complaint is about, once it is settled
    std::string complaint_;
    bool launchAtLogin_ = false;
};

} // namespace mervo
