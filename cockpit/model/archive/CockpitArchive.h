#pragma once

#include "cockpit/model/archive/ArchiveAccounts.h"
#include "cockpit/model/operations/Operations.h"
#include "cockpit/model/settings/CockpitSettings.h"

#include <QObject>
#include <QString>

#include <vector>

namespace mervo {

/// The accounts whose messages are archived over IMAP: settings, passwords, and what Mail offers. Main thread only.
class CockpitArchive final : public QObject {
    Q_OBJECT

public:
    /// Everything outlives the object.
    struct Needs {
        Operations& operations;
        CockpitSettings& settings;
        ArchiveAccounts& accounts;
    };
    explicit CockpitArchive(const Needs& needs, QObject* parent = nullptr);

    const std::vector<GmailAccount>& gmailAccounts() const { return gmailAccounts_; }

    /// Stores the password in the keychain first; if that fails nothing else changes, and the last result says why.
    Q_INVOKABLE void addIMAPAccount(const QString& mailAccountName, const QString& email, const QString& password);
    Q_INVOKABLE void removeIMAPAccount(const QString& email);
    Q_INVOKABLE void refreshGmailAccounts();

Q_SIGNALS:
    void gmailAccountsChanged();

private:
    void finishAdding(const IMAPArchiveAccount& account);
    void finishRemoving(const std::string& address);
    void log(const char* action, const AuditLog::Details& details);

    Needs outside_;
    std::vector<GmailAccount> gmailAccounts_;
};

} // namespace mervo
