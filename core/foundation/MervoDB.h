#pragma once

#include "core/foundation/Database.h"

#include <filesystem>
#include <memory>

namespace mervo {

/// The unified database `mervo.sqlite`: audit trail, policy rules and operator feedback in one file.
///
/// Opening brings the schema up to date: four migrations ("audit_v1", "policy_rules_v1", "feedback_v1",
/// "feedback_v2_pending"), each one transaction, each run once for a file and recorded in the table
/// `grdb_migrations`. Two processes may open a new file at once.
class MervoDB {
public:
    /// The file in the home directory, which is created. Throws DatabaseError or filesystem_error.
    MervoDB();
    /// The same file name in another directory, created if missing.
    explicit MervoDB(
        const std::filesystem::path& directory, std::chrono::milliseconds longestWait = Database::kUsualWait);
    /// A database without a file, of its own.
    static std::shared_ptr<MervoDB> inMemory();
    /// The file in the home directory for reading only: nothing is created or migrated. Empty when there is none, or
    /// when it cannot be opened.
    static std::shared_ptr<MervoDB> existing(std::chrono::milliseconds longestWait = Database::kUsualWait) noexcept;

    /// The one connection of this process to the file in the home directory, opened on first use; empty for the rest
    /// of the process when that failed.
    static const std::shared_ptr<MervoDB>& shared() noexcept;

    Database& database() { return database_; }

private:
    MervoDB(const std::filesystem::path& file, Database::Access access, std::chrono::milliseconds longestWait);
    void migrate();

    Database database_;
};

} // namespace mervo
