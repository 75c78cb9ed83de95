#include "cockpit/model/archive/CockpitArchive.h"

#include "core/foundation/FailureOf.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace mervo {

namespace {

constexpr std::int64_t kImapsPort = 993;

platform::Secret secretFrom(const QString& text)
{
    QByteArray bytes = text.toUtf8();
    platform::Secret secret(std::string_view(bytes.constData(), static_cast<std::size_t>(bytes.size())));
    platform::wipe({bytes.data(), static_cast<std::size_t>(bytes.size())});
    return secret;
}

} // namespace

CockpitArchive::CockpitArchive(const Needs& needs, QObject* parent)
    : QObject(parent)
    , outside_(needs)
{
}

void CockpitArchive::addIMAPAccount(const QString& mailAccountName, const QString& email, const QString& password)
{
    const IMAPArchiveAccount account{.mailAccountName = mailAccountName.toStdString(),
        .email = email.toStdString(),
        .host = MailAccounts::kGmailHost,
        .port = kImapsPort};
    outside_.operations.work.chore(
        *this,
        [&accounts = outside_.accounts, address = account.email, secret = secretFrom(password)] {
            return failureOf([&] { accounts.storePassword(address, secret); });
        },
        [this, account](const std::optional<std::string>& failure) {
            if (failure) {
                outside_.operations.lastResult.show(StatusMessage::Kind::Failed, account.email + " - " + *failure);
            } else {
                finishAdding(account);
            }
        });
}

void CockpitArchive::finishAdding(const IMAPArchiveAccount& account)
{
    const bool saved = outside_.settings.setImapAccounts([&](std::vector<IMAPArchiveAccount>& accounts) {
        std::erase_if(accounts, [&](const IMAPArchiveAccount& other) { return other.email == account.email; });
        accounts.push_back(account);
    });
    if (saved)
        log("add_imap_account", {{"email", account.email}, {"mailAccountName", account.mailAccountName}});
}

void CockpitArchive::removeIMAPAccount(const QString& email)
{
    const std::string address = email.toStdString();
    outside_.operations.work.chore(
        *this,
        [&accounts = outside_.accounts, address] { return failureOf([&] { accounts.removePassword(address); }); },
        [this, address](const std::optional<std::string>& failure) {
            if (failure) {
                outside_.operations.lastResult.show(StatusMessage::Kind::Failed, address + " - " + *failure);
            } else {
                finishRemoving(address);
            }
        });
}

void CockpitArchive::finishRemoving(const std::string& address)
{
    const bool saved = outside_.settings.setImapAccounts([&](std::vector<IMAPArchiveAccount>& accounts) {
        std::erase_if(accounts, [&](const IMAPArchiveAccount& other) { return other.email == address; });
    });
    if (saved)
        log("remove_imap_account", {{"email", address}});
}

void CockpitArchive::log(const char* action, const AuditLog::Details& details)
{
    outside_.operations.write("changing the archive's accounts",
        [action, details](CockpitStores::Open& open) { open.logHuman(action, details); });
}

void CockpitArchive::refreshGmailAccounts()
{
    outside_.operations.work.chore(
        *this, [&accounts = outside_.accounts] { return accounts.gmail(); },
        [this](std::vector<GmailAccount> found) {
            if (found == gmailAccounts_)
                return;
            gmailAccounts_ = std::move(found);
            Q_EMIT gmailAccountsChanged();
        });
}

} // namespace mervo
