#pragma once

#include "platform/desk/mail/HeaderIndex.h"
#include "platform/desk/mail/MailFolders.h"
#include "platform/desk/mail/MailLook.h"
#include "platform/desk/mail/MailSettings.h"
#include "platform/desk/mail/MaildirFlags.h"
#include "platform/desk/mail/MimeEngine.h"
#include "platform/desk/mail/SpecialMailbox.h"

#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace mervo::desk {

/// The owner's mail: accounts, mailboxes and messages in Maildirs. Other programs work on the same folders; every
/// function reports what is there now. Not thread-safe.
class MailStore {
public:
    MailStore(std::vector<MailAccountSettings> accounts, const std::filesystem::path& cache);
    /// Writes the attachment counts learned meanwhile into the index.
    ~MailStore();
    MailStore(const MailStore&) = delete;
    MailStore& operator=(const MailStore&) = delete;

    /// The header index in a cache folder.
    static std::filesystem::path indexFile(const std::filesystem::path& cache);

    const std::vector<MailAccountSettings>& accounts() const noexcept { return accounts_; }
    /// Throws MailError when the account's root is not there.
    std::vector<MailFolder> mailboxes(const MailAccountSettings& account) const;
    /// The account that has this address, ignoring case; null when none has.
    const MailAccountSettings* accountWithAddress(std::string_view address) const;

    /// A snapshot is reused for half a second, so that a script that reads a mailbox column by column gets the same
    /// messages in each, whatever is delivered meanwhile. A change by this store ends it earlier, unless the caller
    /// asks to keep it (see MailLook). Throws MailError when the mailbox cannot be read.
    std::shared_ptr<const MailboxSnapshot> messages(const MailAccountSettings& account,
        const std::filesystem::path& maildir, MailLook::OwnChanges changes = MailLook::OwnChanges::end);
    /// The last known file of a message. Throws MessageGone.
    MaildirEntry entry(const MailboxSnapshot& mailbox, const MessageRecord& message);
    const MaildirKeywords& keywords(const std::filesystem::path& maildir);
    /// The whole message, even if another program has just renamed its file. Throws MessageGone, MailError.
    std::string bytes(const MailboxSnapshot& mailbox, const MessageRecord& message);
    /// The text and attachments of a message; the last result is cached. Throws MessageGone, MailError.
    const MimeContent& content(const MailboxSnapshot& mailbox, const MessageRecord& message);
    /// The number of attachments, without reading the message where the index knows it.
    std::size_t attachmentCount(const MailboxSnapshot& mailbox, const MessageRecord& message);

    /// Changes to one message. If one throws (MessageGone, MailError), the message is unchanged and in its place. A
    /// change without effect writes nothing.
    void change(const MailboxSnapshot& mailbox, const MessageRecord& message, const FlagChange& change);
    /// To another mailbox of any account. It is an error when that does not exist or is the message's own.
    void move(const MailboxSnapshot& mailbox, const MessageRecord& message, const MailFolder& destination);
    /// To the account's trash, which is created if needed. A message in the trash is deleted for good.
    void remove(const MailAccountSettings& account, const MailboxSnapshot& mailbox, const MessageRecord& message);

    /// To be called when this process has delivered into the mailbox: the next snapshot is a new one.
    void changedByUs(const std::filesystem::path& maildir);

private:
    using Counts = std::map<std::uint32_t, std::int32_t>; // by message id

    void createLocalAccount() const;
    MailLook& look(const std::filesystem::path& maildir);
    void moveTo(const MailboxSnapshot& mailbox, const MessageRecord& message, const std::filesystem::path& destination);
    const std::filesystem::path& trash(const MailAccountSettings& account);

    const std::vector<MailAccountSettings> accounts_;
    HeaderIndex index_;
    std::unordered_map<std::string, MailLook> looks_; // by Maildir
    std::unordered_map<std::string, std::filesystem::path> trashes_; // by account; there once they were asked for
    std::string contentOf_; // the Maildir and base of the message whose content is kept
    MimeContent content_;
    std::unordered_map<std::string, Counts> learned_; // by Maildir
};

} // namespace mervo::desk
