#pragma once

#include "platform/desk/mail/HeaderIndex.h"
#include "platform/desk/mail/MailFolders.h"
#include "platform/desk/mail/MimeEngine.h"
#include "platform/desk/mail/SpecialMailbox.h"
#include "platform/desk/settings/Configuration.h"

#include <chrono>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace mervo::desk {

/// A message that is composed and has not been saved.
struct OutgoingMail {
    std::string sender; ///< an address of the account that it goes from
    std::vector<MailAddress> to, cc, bcc;
    std::string subject;
    std::string text;
    std::vector<std::filesystem::path> attachments;
};

/// The owner's mail: accounts, their mailboxes and messages, on the Maildirs that the configuration names. Other
/// programs work on the same folders; every function tells what is there now. One object belongs to one thread.
class MailStore {
public:
    MailStore(Configuration configuration, const std::filesystem::path& cache);
    /// Writes what was learned about attachments into the index.
    ~MailStore();
    MailStore(const MailStore&) = delete;
    MailStore& operator=(const MailStore&) = delete;

    const std::vector<MailAccountSettings>& accounts() const noexcept { return configuration_.mailAccounts; }
    std::vector<MailFolder> mailboxes(const MailAccountSettings& account) const;
    /// The account that has this address, ignoring case; null when none has.
    const MailAccountSettings* accountWithAddress(std::string_view address) const;

    /// Throws MailError when the mailbox cannot be read. One look serves for half a second: a script that reads a
    /// mailbox column by column gets columns of the same messages, whatever is delivered meanwhile.
    std::shared_ptr<const MailboxSnapshot> messages(
        const MailAccountSettings& account, const std::filesystem::path& maildir);
    /// The file of a message, also when another program has just renamed it. Throws MessageGone, MailError.
    std::string bytes(const MailboxSnapshot& mailbox, const MessageRecord& message) const;
    /// The text and attachments of a message; the last one asked for is kept. Throws MessageGone, MailError.
    const MimeContent& content(const MailboxSnapshot& mailbox, const MessageRecord& message);
    /// The number of attachments, without reading the message where the index knows it.
    std::size_t attachmentCount(const MailboxSnapshot& mailbox, const MessageRecord& message);

    /// Saves into the drafts mailbox of the sender's account, which is made when it is missing. Returns the file.
    /// Throws MailError, NoSuchAttachment; then nothing is left behind.
    std::filesystem::path saveDraft(const OutgoingMail& mail);

private:
    struct Look {
        std::chrono::steady_clock::time_point taken;
        std::shared_ptr<const MailboxSnapshot> snapshot;
    };
    using Counts = std::map<std::uint32_t, std::int32_t>; // by message id

    void createLocalAccount() const;

    Configuration configuration_;
    HeaderIndex index_;
    std::unordered_map<std::string, Look> looks_; // by Maildir
    std::string contentOf_; // the Maildir and base of the message whose content is kept
    MimeContent content_;
    std::unordered_map<std::string, Counts> learned_; // by Maildir
};

} // namespace mervo::desk
