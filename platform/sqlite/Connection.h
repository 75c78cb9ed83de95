#pragma once

#include "platform/sqlite/LockWait.h"

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <string>

struct sqlite3;

namespace mervo::sqlite {

enum class Access {
    readWrite, ///< the file is made when there is none
    readOnly, ///< refuses every statement that writes; completes the roll-back that a killed writer left behind
    readOnlyFile, ///< likewise, and the file stays as it is: a roll-back that is due makes every statement fail
};

/// One open database. One thread at a time. Every function throws Error.
///
///     Connection connection(file, Access::readWrite, std::chrono::seconds(10));
///     Transaction transaction(connection, Transaction::Lock::immediate);
///     Statement(connection, "INSERT INTO place (name) VALUES (?)").bind(name).run();
///     transaction.commit();
class Connection {
public:
    /// ":memory:" gives a database of its own. Only `readWrite` makes a file.
    Connection(const std::filesystem::path& file, Access access, std::chrono::milliseconds longestWait);
    ~Connection();
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    /// Runs one statement or several; the rows that they give are dropped.
    void execute(const std::string& sql);

    std::int64_t lastInsertedRow() const;
    int changes() const; ///< rows that the last statement inserted, changed or deleted
    std::int64_t totalChanges() const; ///< since the opening, also what was rolled back
    bool isInTransaction() const;
    LockWait& lockWait() { return lockWait_; }

private:
    friend class Blob;
    friend class Statement;
    static int waitForLock(void* self, int attempt);
    void check(int code) const; ///< throws unless it is SQLITE_OK
    [[noreturn]] void fail(int code) const;

    LockWait lockWait_;
    sqlite3* handle_ = nullptr;
};

} // namespace mervo::sqlite
