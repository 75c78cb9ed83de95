#pragma once

#include "platform/desk/mail/IndexDatabase.h"
#include "platform/desk/mail/MailboxSnapshot.h"

#include <filesystem>
#include <map>
#include <memory>
#include <string>
#include <unordered_map>

namespace mervo::desk {

/// The headers of all mailboxes, kept in a database in the cache folder so that only new files are ever parsed.
///
/// Whatever the Maildirs hold now is what a snapshot shows: an unchanged folder is known by the times of cur and new,
/// a changed one is listed and compared by names. A time so near to the last listing that a later change could share
/// it is not trusted.
///
/// The database is never needed: one that is damaged is removed and built anew, and where it cannot be used at all
/// (a cache that cannot be written, a lock that another process does not give up) this process keeps its own in
/// memory. Several processes may use one file at once. One object belongs to one thread.
class HeaderIndex {
public:
    explicit HeaderIndex(std::filesystem::path file);

    /// The messages now. Throws MailError when the Maildir cannot be read; one that is missing is an error unless
    /// `mayBeMissing`, then it is empty. The same object as before while nothing changed.
    std::shared_ptr<const MailboxSnapshot> snapshot(
        const std::filesystem::path& maildir, WhenMissing whenMissing = WhenMissing::fails);

    /// Keeps what a parse of whole messages told. Failures are of no matter.
    void rememberAttachments(
        const std::filesystem::path& maildir, const std::map<std::uint32_t, std::int32_t>& counts) noexcept;

private:
    struct Known {
        IndexDatabase::Folder folder;
        std::shared_ptr<const MailboxSnapshot> snapshot;
    };

    IndexDatabase& database();
    void startAnew(const IndexError& reason);
    std::shared_ptr<const MailboxSnapshot> trySnapshot(const std::filesystem::path& maildir, const MaildirStamp& stamp);
    std::shared_ptr<const MailboxSnapshot> storedSnapshot(
        const std::filesystem::path& maildir, const IndexDatabase::Folder& folder);
    Known update(const std::filesystem::path& maildir);

    std::filesystem::path file_;
    std::unique_ptr<IndexDatabase> database_;
    int damages_ = 0;
    bool inMemory_ = false;
    std::unordered_map<std::string, Known> known_; // by the Maildir's path
};

} // namespace mervo::desk
