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

/// The owner's mail: accounts, their mailboxes and messages, on the Maildirs that the configuration names. Other
/// programs work on the same folders; every function tells what is there now. One object belongs to one thread.
class MailStore {
public:
    MailStore(std::vector<MailAccountSettings> accounts, const std::filesystem::path& cache);
    /// Writes what was learned about attachments into the index.
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

    /// Throws MailError when the mailbox cannot be read. One look serves for half a second: a script that reads a
    /// mailbox column by column gets columns of the same messages, whatever is delivered meanwhile. It ends when this
    /// store changes the mailbox, unless the caller asks for a look that serves on (see MailLook).
    std::shared_ptr<const MailboxSnapshot> messages(const MailAccountSettings& account,
        const std::filesystem::path& maildir, MailLook::OwnChanges changes = MailLook::OwnChanges::end);
    /// The name of a message's file now, as far as is known. Throws MessageGone.
    MaildirEntry entry(const MailboxSnapshot& mailbox, const MessageRecord& message);
    const MaildirKeywords& keywords(const std::filesystem::path& maildir);
    /// The file of a message, also when another program has just renamed it. Throws MessageGone, MailError.
    std::string bytes(const MailboxSnapshot& mailbox, const MessageRecord& message);
    /// The text and attachments of a message; the last one asked for is kept. Throws MessageGone, MailError.
    const MimeContent& content(const MailboxSnapshot& mailbox, const MessageRecord& message);
    /// The number of attachments, without reading the message where the index knows it.
    std::size_t attachmentCount(const MailboxSnapshot& mailbox, const MessageRecord& message);

    /// Changes of one message. When they throw (MessageGone, MailError) the message is as it was and where it was.
    /// Nothing is written when a change changes nothing.
    void change(const MailboxSnapshot& mailbox, const MessageRecord& message, const FlagChange& change);
    /// To another mailbox of any account; one that is not there is an error, and so is the message's own.
    void move(const MailboxSnapshot& mailbox, const MessageRecord& message, const MailFolder& destination);
    /// To the account's trash, which is made when it is missing. A message that is there already is removed for good.
    void remove(const MailAccountSettings& account, const MailboxSnapshot& mailbox, const MessageRecord& message);

    /// Something was put into the mailbox by this process: the next look at it is a fresh one.
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
