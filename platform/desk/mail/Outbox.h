#pragma once

#include "platform/desk/mail/MailStore.h"
#include "platform/desk/mail/OutgoingMail.h"

#include <filesystem>

namespace mervo::desk {

/// What leaves the owner's hands. A message goes from the account that has its sender's address, else from the first
/// account. Whatever throws (MailError, NoSuchAttachment) leaves nothing behind, and nothing was sent.
class Outbox {
public:
    explicit Outbox(MailStore& store)
        : store_(store)
    {
    }

    /// Saves into the account's drafts mailbox, which is made when it is missing. Returns the file.
    std::filesystem::path saveDraft(const OutgoingMail& mail);

    /// Hands the message to the account's command, or, where it has none, delivers it to the desk's own accounts; an
    /// address elsewhere is an error then. The copy for the sent mailbox is written before and shown after: a full
    /// disk sends nothing. When it cannot be shown any more the message is sent all the same: the log says so.
    void send(const OutgoingMail& mail);

private:
    const MailAccountSettings& senderAccount(const OutgoingMail& mail) const;
    std::filesystem::path specialMaildir(const MailAccountSettings& account, SpecialMailbox which) const;
    void deliverLocally(
        const MailAccountSettings& account, const MimeDraft& draft, const std::vector<MailAddress>& recipients);

    MailStore& store_;
};

} // namespace mervo::desk
