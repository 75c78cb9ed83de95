#include "platform/desk/mail/Outbox.h"

#include "platform/desk/mail/MailDate.h"
#include "platform/desk/mail/MessageFile.h"
#include "platform/desk/mail/Submission.h"
#include "platform/unicode.h"
#include "platform/unified_log.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <ctime>
#include <fmt/format.h>
#include <set>
#include <sys/random.h>

namespace mervo::desk {
namespace {

namespace fs = std::filesystem;

std::string newMessageId(std::string_view sender)
{
    std::array<std::uint64_t, 2> random{};
    if (getrandom(random.data(), sizeof random, 0) != sizeof random)
        random[0] = static_cast<std::uint64_t>(std::clock());
    std::string_view domain = sender.substr(sender.rfind('@') + 1);
    return fmt::format("{:x}.{:016x}{:016x}@{}", std::time(nullptr), random[0], random[1],
        domain.empty() ? std::string_view("localhost") : domain);
}

std::string oneLine(std::string_view text)
{
    std::string line = platform::withValidUtf8(text);
    std::replace_if(
        line.begin(), line.end(), [](unsigned char c) { return c < 0x20 || c == 0x7F; }, ' ');
    return line;
}

std::vector<MailAddress> checked(const std::vector<MailAddress>& addresses)
{
    std::vector<MailAddress> result;
    for (const MailAddress& address : addresses) {
        if (!isPlainAddress(address.address))
            throw MailError(fmt::format("“{}” is not an address that mail can be sent to.", oneLine(address.address)));
        result.push_back({oneLine(address.name), address.address});
    }
    return result;
}

MimeDraft draftOf(const OutgoingMail& mail, const MailStore& store, const MailAccountSettings& account)
{
    MimeDraft draft;
    draft.from.address = store.accountWithAddress(mail.sender) == &account ? mail.sender : account.addresses.front();
    draft.to = checked(mail.to);
    draft.cc = checked(mail.cc);
    draft.bcc = checked(mail.bcc);
    draft.subject = oneLine(mail.subject);
    draft.text = mail.text;
    draft.date = formatMailDate(std::time(nullptr));
    draft.messageId = newMessageId(draft.from.address);
    draft.attachments = mail.attachments;
    draft.inReplyTo = mail.inReplyTo;
    draft.references = mail.references;
    draft.forwarded = mail.forwarded;
    return draft;
}

std::vector<MailAddress> recipientsOf(const OutgoingMail& mail)
{
    std::vector<MailAddress> all = mail.to;
    all.insert(all.end(), mail.cc.begin(), mail.cc.end());
    all.insert(all.end(), mail.bcc.begin(), mail.bcc.end());
    if (all.empty())
        throw MailError("A message needs a recipient before it can be sent.");
    return all;
}

} // namespace

const MailAccountSettings& Outbox::senderAccount(const OutgoingMail& mail) const
{
    const MailAccountSettings* account = mail.sender.empty() ? nullptr : store_.accountWithAddress(mail.sender);
    return account == nullptr ? store_.accounts().front() : *account;
}

fs::path Outbox::specialMaildir(const MailAccountSettings& account, SpecialMailbox which) const
{
    requireMailRoot(account);
    fs::path maildir = mailFolderPath(account, specialMailbox(account, which));
    createMailFolder(account, maildir);
    return maildir;
}

fs::path Outbox::saveDraft(const OutgoingMail& mail)
{
    const MailAccountSettings& account = senderAccount(mail);
    const MimeDraft draft = draftOf(mail, store_, account);
    const MimeEngine& engine = mimeEngine();
    const fs::path maildir = specialMaildir(account, SpecialMailbox::drafts);
    store_.changedByUs(maildir);
    return deliverToMaildir(maildir, "DS", [&](int descriptor) { engine.write(draft, descriptor); });
}

void Outbox::send(const OutgoingMail& mail)
{
    const MailAccountSettings& account = senderAccount(mail);
    const MimeDraft draft = draftOf(mail, store_, account);
    const std::vector<MailAddress> all = recipientsOf(mail);
    const MimeEngine& engine = mimeEngine();
    const fs::path maildir = specialMaildir(account, SpecialMailbox::sent);
    MaildirDelivery copy(maildir, [&](int descriptor) { engine.write(draft, descriptor); });
    if (account.sendmail.empty()) {
        deliverLocally(account, draft, all);
    } else {
        submit(account, readMessageFile(copy.file()));
    }
    store_.changedByUs(maildir);
    try {
        copy.commit("S");
    } catch (const MailError& error) {
        // It is out: to call it unsent would send it twice.
        platform::logError("Mail", fmt::format("a sent message is not kept: {}", error.what()));
    }
}

void Outbox::deliverLocally(
    const MailAccountSettings& account, const MimeDraft& draft, const std::vector<MailAddress>& recipients)
{
    std::set<const MailAccountSettings*> reached;
    for (const MailAddress& address : recipients) {
        const MailAccountSettings* own = store_.accountWithAddress(address.address);
        if (own == nullptr) {
            throw MailError(fmt::format("The message was not sent: the account “{}” has no \"sendmail\" command in "
                                        "desk.toml, so it reaches the desk’s own addresses and not {}.",
                account.name, address.address));
        }
        reached.insert(own);
    }
    MimeDraft delivered = draft;
    delivered.bcc.clear();
    const MimeEngine& engine = mimeEngine();
    std::vector<MaildirDelivery> deliveries;
    for (const MailAccountSettings* own : reached) {
        const fs::path inbox = specialMaildir(*own, SpecialMailbox::inbox);
        store_.changedByUs(inbox);
        deliveries.emplace_back(inbox, [&](int descriptor) { engine.write(delivered, descriptor); });
    }
    for (MaildirDelivery& delivery : deliveries)
        delivery.commitAsNew();
}

} // namespace mervo::desk
