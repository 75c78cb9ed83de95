#pragma once

#include "platform/desk/mail/IndexDatabase.h"
#include "platform/desk/mail/MailboxSnapshot.h"

#include <filesystem>
#include <map>
#include <memory>
#include <string>
#include <unordered_map>

namespace mervo::desk {

/// Caches the headers of all mailboxes in a database, so that only new files are parsed.
///
/// A snapshot always shows what the Maildir holds now. An unchanged folder is recognised by the times of cur and new;
/// a changed one is listed and compared by file names. A time so close to the last listing that a later change could
/// share it is not trusted.
///
/// The database is disposable: a damaged one is removed and rebuilt, and where none can be used (an unwritable cache, a
/// lock that another process holds) this process keeps one in memory. Several processes may share the file. Not
/// thread-safe.
class HeaderIndex {
public:
    explicit HeaderIndex(std::filesystem::path file);

    /// The messages now; the same object as before while nothing has changed. Throws MailError when the Maildir cannot
    /// be read.
    std::shared_ptr<const MailboxSnapshot> snapshot(
        const std::filesystem::path& maildir, WhenMissing whenMissing = WhenMissing::fails);

    /// Stores attachment counts learned by parsing whole messages, by message id. Failures are ignored.
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
