#pragma once

#include "core/foundation/Database.h"

#include <filesystem>
#include <memory>

namespace mervo {

/// The unified database `mervo.sqlite`: audit trail, policy rules and operator feedback in one file, which is the
/// owner's alone (mode 0600, as SQLite's journal beside it).
///
/// Opening brings the schema up to date: four migrations ("audit_v1", "policy_rules_v1", "feedback_v1",
/// "feedback_v2_pending"), each one transaction, each run once for a file and recorded in the table
/// `grdb_migrations`. Two processes may open a new file at once.
class MervoDB {
public:
    /// The file in the home directory, which is created. Throws sqlite::Error or filesystem_error.
    MervoDB();
    /// The same file name in another directory, created if missing.
    explicit MervoDB(
        const std::filesystem::path& directory, std::chrono::milliseconds longestWait = Database::kUsualWait);
    /// A database without a file, of its own.
    static std::shared_ptr<MervoDB> inMemory();
    /// The file in the home directory for reading only: nothing is created or migrated. Empty when there is none.
    /// Throws when there is one that cannot be opened.
    static std::shared_ptr<MervoDB> existing(std::chrono::milliseconds longestWait = Database::kUsualWait);

    /// The one connection of this process to the file in the home directory. Opened when it is first wanted, again at
    /// each call until that succeeds, and anew when the file was deleted or another put in its place: a row written to
    /// a file without a name would be lost. Never empty; throws as the constructor does. Any thread; threads that open
    /// at the same time wait for a lock concurrently.
    static std::shared_ptr<MervoDB> shared();

    Database& database() { return database_; }

    /// The migrations that the database lacks, in their order. Throws sqlite::Error; what was finished before stays.
    static void migrate(Database& database);

private:
    MervoDB(const std::filesystem::path& file, Database::Access access, std::chrono::milliseconds longestWait);

    Database database_;
};

} // namespace mervo
