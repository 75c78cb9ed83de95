#include "platform/sqlite/Connection.h"

#include "platform/sqlite/Error.h"

#include <sqlite3.h>

namespace mervo::sqlite {

namespace {

int flagsFor(Access access)
{
    switch (access) {
    case Access::readWrite:
        return SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE;
    case Access::readOnly: // a roll-back has to write
        return SQLITE_OPEN_READWRITE;
    case Access::readOnlyFile:
        return SQLITE_OPEN_READONLY;
    }
    return 0;
}

} // namespace

Connection::Connection(const std::filesystem::path& file, Access access, std::chrono::milliseconds longestWait)
    : lockWait_(longestWait)
{
    const int flags = flagsFor(access) | SQLITE_OPEN_NOMUTEX | SQLITE_OPEN_EXRESCODE;
    if (const int code = sqlite3_open_v2(file.c_str(), &handle_, flags, nullptr); code != SQLITE_OK) {
        const Error error(code, sqlite3_errmsg(handle_), // which knows what a null pointer means
            {file, {}, handle_ == nullptr ? 0 : sqlite3_system_errno(handle_)});
        sqlite3_close_v2(handle_);
        throw error;
    }
    sqlite3_busy_handler(handle_, &Connection::waitForLock, this);
    if (access == Access::readOnly)
        sqlite3_exec(handle_, "PRAGMA query_only = ON", nullptr, nullptr, nullptr);
}

Connection::~Connection()
{
    sqlite3_close_v2(handle_);
}

void Connection::execute(const std::string& sql)
{
    check(sqlite3_exec(handle_, sql.c_str(), nullptr, nullptr, nullptr));
}

std::int64_t Connection::lastInsertedRow() const
{
    return sqlite3_last_insert_rowid(handle_);
}

int Connection::changes() const
{
    return sqlite3_changes(handle_);
}

std::int64_t Connection::totalChanges() const
{
    return sqlite3_total_changes64(handle_);
}

bool Connection::isInTransaction() const
{
    return sqlite3_get_autocommit(handle_) == 0;
}

/// SQLite calls it while another connection holds the lock.
int Connection::waitForLock(void* self, int attempt)
{
    auto& connection = *static_cast<Connection*>(self);
    return connection.lockWait_.pause(attempt, connection.isInTransaction()) ? 1 : 0;
}

void Connection::check(int code) const
{
    if (code != SQLITE_OK)
        fail(code);
}

void Connection::fail(int code) const
{
    const char* file = sqlite3_db_filename(handle_, "main");
    throw Error(code, sqlite3_errmsg(handle_),
        {file == nullptr ? "" : file, lockWait_.longest(), sqlite3_system_errno(handle_)});
}

} // namespace mervo::sqlite
