#include "platform/desk/mail/MailStore.h"

#include "platform/desk/mail/MailDate.h"
#include "platform/desk/mail/MessageFile.h"
#include "platform/desk/mail/MessageMove.h"
#include "platform/unicode.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <ctime>
#include <fmt/format.h>
#include <sys/random.h>
#include <utility>

namespace mervo::desk {

namespace fs = std::filesystem;

fs::path MailStore::indexFile(const fs::path& cache)
{
    return cache / "mail-index.sqlite";
}

MailStore::MailStore(std::vector<MailAccountSettings> accounts, const fs::path& cache)
    : accounts_(std::move(accounts))
    , index_(indexFile(cache))
{
    createLocalAccount();
}

MailStore::~MailStore()
{
    for (const auto& [maildir, counts] : learned_)
        index_.rememberAttachments(maildir, counts);
}

/// Where nothing is configured there is an account to work with at once. A home that cannot be written is no reason
/// to fail here: the account is empty then.
void MailStore::createLocalAccount() const
{
    for (const MailAccountSettings& account : accounts()) {
        std::error_code error;
        if (!account.local || fs::exists(account.root / "cur", error))
            continue;
        try {
            createMaildir(account.root);
            for (const SpecialMailbox which :
                {SpecialMailbox::drafts, SpecialMailbox::sent, SpecialMailbox::trash, SpecialMailbox::junk})
                createMailFolder(account, mailFolderPath(account, specialMailbox(account, which)));
        } catch (const MailError&) {
            return;
        }
    }
}

std::vector<MailFolder> MailStore::mailboxes(const MailAccountSettings& account) const
{
    requireMailRoot(account);
    return listMailFolders(account);
}

const MailAccountSettings* MailStore::accountWithAddress(std::string_view address) const
{
    const std::string wanted = platform::foldCase(address);
    for (const MailAccountSettings& account : accounts()) {
        for (const std::string& own : account.addresses) {
            if (platform::foldCase(own) == wanted)
                return &account;
        }
    }
    return nullptr;
}

MailLook& MailStore::look(const fs::path& maildir)
{
    return looks_.try_emplace(maildir.native(), maildir).first->second;
}

std::shared_ptr<const MailboxSnapshot> MailStore::messages(
    const MailAccountSettings& account, const fs::path& maildir, MailLook::OwnChanges changes)
{
    MailLook& last = look(maildir);
    if (auto snapshot = last.snapshot(changes))
        return snapshot;
    // An account whose root is there but was never used as a Maildir has an empty inbox.
    std::error_code error;
    const bool mayBeMissing = account.local || (maildir == account.root && fs::is_directory(maildir, error));
    auto snapshot = index_.snapshot(maildir, mayBeMissing ? WhenMissing::isEmpty : WhenMissing::fails);
    last.take(snapshot);
    return snapshot;
}

MaildirEntry MailStore::entry(const MailboxSnapshot& mailbox, const MessageRecord& message)
{
    return look(mailbox.maildir()).entry(mailbox, message);
}

const MaildirKeywords& MailStore::keywords(const fs::path& maildir)
{
    return look(maildir).keywords();
}

std::string MailStore::bytes(const MailboxSnapshot& mailbox, const MessageRecord& message)
{
    std::string found;
    look(mailbox.maildir()).withFile(mailbox, message, [&](const MaildirEntry& file) {
        try {
            found = readMessageFile(messagePath(mailbox.maildir(), file));
            return true;
        } catch (const MessageGone&) {
            return false;
        }
    });
    return found;
}

const MimeContent& MailStore::content(const MailboxSnapshot& mailbox, const MessageRecord& message)
{
    std::string key = fmt::format("{}/{}", mailbox.maildir().native(), message.base());
    if (key != contentOf_) {
        contentOf_.clear();
        content_ = mimeEngine().read(bytes(mailbox, message));
        contentOf_ = std::move(key);
        const auto count = static_cast<std::int32_t>(content_.attachments.size());
        if (message.attachments() != count)
            learned_[mailbox.maildir().native()][message.id()] = count;
    }
    return content_;
}

std::size_t MailStore::attachmentCount(const MailboxSnapshot& mailbox, const MessageRecord& message)
{
    if (message.attachments() >= 0)
        return static_cast<std::size_t>(message.attachments());
    return content(mailbox, message).attachments.size();
}

void MailStore::change(const MailboxSnapshot& mailbox, const MessageRecord& message, const FlagChange& change)
{
    MailLook& known = look(mailbox.maildir());
    known.withFile(mailbox, message, [&](const MaildirEntry& file) {
        const std::string_view before = splitMaildirName(file.fileName).info;
        const std::string after = changedInfo(before, change, mailbox.maildir(), known.keywords());
        if (after == before)
            return true;
        auto renamed = renameMessage(mailbox.maildir(), file, after);
        if (renamed)
            known.renamed(message.base(), std::move(*renamed));
        return renamed.has_value();
    });
}

void MailStore::move(const MailboxSnapshot& mailbox, const MessageRecord& message, const MailFolder& destination)
{
    if (destination.path == mailbox.maildir())
        throw MailError(fmt::format("The message is in the mailbox “{}” already.", destination.name));
    moveTo(mailbox, message, destination.path);
}

void MailStore::moveTo(const MailboxSnapshot& mailbox, const MessageRecord& message, const fs::path& destination)
{
    MailLook& known = look(mailbox.maildir());
    MailLook& arriving = look(destination);
    known.withFile(mailbox, message, [&](const MaildirEntry& file) {
        const std::string info =
            translatedInfo(splitMaildirName(file.fileName).info, known.keywords(), destination, arriving.keywords());
        return moveMessage(mailbox.maildir(), file, destination, info).has_value();
    });
    known.removed(message.base());
    arriving.changed();
}

void MailStore::remove(const MailAccountSettings& account, const MailboxSnapshot& mailbox, const MessageRecord& message)
{
    if (const fs::path& destination = trash(account); destination != mailbox.maildir())
        return moveTo(mailbox, message, destination);
    MailLook& known = look(mailbox.maildir());
    known.withFile(mailbox, message, [&](const MaildirEntry& file) { return removeMessage(mailbox.maildir(), file); });
    known.removed(message.base());
}

const fs::path& MailStore::trash(const MailAccountSettings& account)
{
    fs::path& known = trashes_[account.name];
    if (known.empty()) {
        requireMailRoot(account);
        fs::path found = mailFolderPath(account, specialMailbox(account, SpecialMailbox::trash));
        createMailFolder(account, found);
        known = std::move(found);
    }
    return known;
}

void MailStore::changedByUs(const fs::path& maildir)
{
    look(maildir).changed();
}

} // namespace mervo::desk
