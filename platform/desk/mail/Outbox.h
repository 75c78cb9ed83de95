#pragma once

#include "platform/desk/mail/MailStore.h"
#include "platform/desk/mail/OutgoingMail.h"

#include <filesystem>

namespace mervo::desk {

/// Saves and sends composed messages, from the account with the sender's address, else from the first one. If a
/// function throws (MailError, NoSuchAttachment), nothing was sent and nothing is left behind.
class Outbox {
public:
    explicit Outbox(MailStore& store)
        : store_(store)
    {
    }

    /// Saves into the account's drafts mailbox, which is created if needed. Returns the file.
    std::filesystem::path saveDraft(const OutgoingMail& mail);

    /// Passes the message to the account's command; an account without one delivers to the desk's own accounts only,
    /// and any other address is an error. The copy for the sent mailbox is written to tmp before sending, so that a
    /// full disk sends nothing, and moved into place afterwards. If that fails, the message counts as sent and the log
    /// says so.
    void send(const OutgoingMail& mail);

private:
    const MailAccountSettings& senderAccount(const OutgoingMail& mail) const;
    std::filesystem::path specialMaildir(const MailAccountSettings& account, SpecialMailbox which) const;
    void deliverLocally(
        const MailAccountSettings& account, const MimeDraft& draft, const std::vector<MailAddress>& recipients);

    MailStore& store_;
};

} // namespace mervo::desk
