#include "core/tools/mail/MailArchiveService.h"

#include "core/foundation/Text.h"
#include "core/imap/IMAPClient.h"
#include "core/policy/HarnessRunner.h"
#include "core/secrets/Keychain.h"
#include "core/tools/Arguments.h"
#include "core/tools/mail/MailAccounts.h"
#include "core/tools/mail/MailMessageIds.h"
#include "core/tools/mail/MailTools.h"

#include <algorithm>
#include <fmt/format.h>
#include <limits>

namespace mervo::MailArchiveService {

namespace {

IMAPArchiveAccount gmailAccount(const MailAccounts::Info& info)
{
    return {info.mailAccountName, info.email, MailAccounts::kGmailHost, IMAPClient::kPort};
}

std::string moveToFolder(const Args& args, const std::string& mailbox)
{
    Args move = args;
    move["mailbox"] = mailbox;
    if (!Arguments::isPresent(args, "dest"))
        move["dest"] = kFallbackArchiveMailbox;
    // Not gated again: the verdict on mail.archive was the verdict on this.
    const auto done = HarnessRunner::executeBuilt(Tools::mailMove(), move);
    if (!done.ok)
        throw ArchiveError::osascript(done.error);
    return done.output;
}

std::size_t moveOverImap(
    const IMAPArchiveAccount& account, const platform::Secret& password, const std::vector<std::string>& ids)
{
    try {
        return IMAPClient::archiveByMessageID(account.host, portOf(account), account.email, password, ids);
    } catch (const IMAPError& error) {
        throw ArchiveError::imap(error.what());
    }
}

} // namespace

ArchiveError ArchiveError::missingCredential(const std::string& email)
{
    return ArchiveError("no app password in Keychain for " + email + " - add it in Settings → Archive.");
}

ArchiveError ArchiveError::osascript(const std::string& text)
{
    return ArchiveError("could not read the messages to archive: " + text);
}

ArchiveError ArchiveError::imap(const std::string& text)
{
    return ArchiveError("IMAP archive failed: " + text);
}

std::string archive(const Args& args)
{
    const std::string mailAccount = Arguments::optional(args, "account");
    const std::string mailbox = Arguments::optional(args, "mailbox", "INBOX");
    const auto account = imapAccount(mailAccount);
    if (!account)
        return moveToFolder(args, mailbox);
    const auto password = Keychain::password(account->email);
    if (!password)
        throw ArchiveError::missingCredential(account->email);
    const auto gathered = MailMessageIds::gather(mailAccount, mailbox, args);
    if (!gathered.ok)
        throw ArchiveError::osascript(gathered.error);
    if (gathered.ids.empty())
        return "OK archived 0 message(s) - no match";
    return fmt::format(
        "OK archived {} message(s) - moved out of INBOX over IMAP", moveOverImap(*account, *password, gathered.ids));
}

std::string destinationLabel(const std::string& account)
{
    return imapAccount(account) ? "archive (IMAP \\Inbox)" : kFallbackArchiveMailbox;
}

std::optional<IMAPArchiveAccount> imapAccount(const std::string& mailAccountName)
{
    const auto configured = HarnessConfig::load().imapAccounts;
    const auto found = std::ranges::find(configured, mailAccountName, &IMAPArchiveAccount::mailAccountName);
    if (found != configured.end())
        return *found;
    if (mailAccountName.empty())
        return std::nullopt;
    const auto known = MailAccounts::all();
    const auto info = std::ranges::find(known, mailAccountName, &MailAccounts::Info::mailAccountName);
    if (info == known.end() || !info->isGmail() || info->email.empty())
        return std::nullopt;
    return gmailAccount(*info);
}

std::optional<IMAPArchiveAccount> imapAccountOfAddress(const std::string& email)
{
    for (const auto& account : HarnessConfig::load().imapAccounts) {
        if (account.email == email)
            return account;
    }
    for (const auto& info : MailAccounts::gmail()) {
        if (Text::equalsIgnoringCase(info.email, email))
            return gmailAccount(info);
    }
    const MailAccounts::Info byDomain{email, email, {}};
    return byDomain.isGmail() ? std::optional(gmailAccount(byDomain)) : std::nullopt;
}

std::uint16_t portOf(const IMAPArchiveAccount& account) noexcept
{
    const bool fits = account.port > 0 && account.port <= std::numeric_limits<std::uint16_t>::max();
    return fits ? static_cast<std::uint16_t>(account.port) : IMAPClient::kPort;
}

} // namespace mervo::MailArchiveService
