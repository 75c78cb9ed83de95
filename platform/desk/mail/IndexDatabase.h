#pragma once

#include "platform/desk/mail/Maildir.h"
#include "platform/desk/mail/RecordChunks.h"
#include "platform/sqlite/Connection.h"
#include "platform/sqlite/Error.h"
#include "platform/sqlite/Transaction.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace mervo::desk {

/// The database cannot be used.
class IndexError final : public std::runtime_error {
public:
    /// The content is damaged.
    explicit IndexError(const std::string& message);
    explicit IndexError(const sqlite::Error& reason);
    /// Whether the content cannot be trusted, so that a new database is needed.
    bool isDamaged() const noexcept { return damaged_; }

private:
    bool damaged_;
};

/// The tables of the header index: mailboxes by path, and their chunks. Knows nothing of messages.
///
///     folder(id, path, stamp, scanned, generation, content)
///     chunk(folder, number, fingerprint, data)
///     counter(next)     the id of the next new message
///
/// The counter begins anywhere, so that an id of an earlier index means nothing rather than another message.
///
/// Nothing is synced to disk: what a power cut leaves half-written is found by the fingerprints and built anew.
/// Another process may hold the lock; a call waits for it for up to ten seconds. Every function throws IndexError or
/// sqlite::Error.
class IndexDatabase {
public:
    struct Folder {
        std::int64_t id = 0;
        MaildirStamp stamp;
        std::int64_t scanned = 0; ///< when the listing began, nanoseconds since 1970
        std::int64_t generation = 0; ///< grows with every change
        std::uint64_t content = 0; ///< over the fingerprints of all chunks
    };
    /// An empty path: a database in memory, which lasts as long as this object.
    explicit IndexDatabase(const std::filesystem::path& file);
    IndexDatabase(const IndexDatabase&) = delete;
    IndexDatabase& operator=(const IndexDatabase&) = delete;

    /// What is read while one stands belongs together, whatever other processes write.
    class Reading {
    public:
        explicit Reading(IndexDatabase& database);

    private:
        sqlite::Transaction transaction_;
    };

    std::optional<Folder> folder(const std::filesystem::path& maildir);
    /// The chunks of a folder that was read under the same Reading or Change. Damaged when one of them, or their
    /// number, is not what was written.
    RecordChunks readChunks(const Folder& folder);

    /// One change: holds the write lock from its making; rolled back unless committed.
    class Change {
    public:
        explicit Change(IndexDatabase& database);

        /// `folder.id` 0: a new row, whose id is filled in.
        void write(Folder& folder, const std::filesystem::path& maildir);
        void write(const Folder& folder, std::int64_t chunk, std::string_view data);
        void removeChunk(const Folder& folder, std::int64_t number);
        std::uint64_t contentOf(const Folder& folder);
        std::uint32_t takeIds(std::size_t count);
        void commit();

    private:
        sqlite::Connection& connection_;
        sqlite::Transaction transaction_;
    };

private:
    std::int64_t schemaVersion();
    std::string_view readBlob(std::int64_t row, RecordMemory& memory);

    sqlite::Connection connection_;
};

} // namespace mervo::desk
