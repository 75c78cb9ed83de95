#include "core/foundation/Database.h"

#include <algorithm>
#include <sqlite3.h>
#include <thread>
#include <utility>

namespace mervo {

namespace {

constexpr int kShortestPauseMicroseconds = 500;
constexpr int kLongestPauseMicroseconds = 1500;

thread_local Database::OneWait* oneWait = nullptr; ///< the innermost of this thread

} // namespace

Statement::Statement(const Database& database, std::string_view sql)
    : database_(&database)
{
    if (sqlite3_prepare_v2(database.connection_, sql.data(), static_cast<int>(sql.size()), &statement_, nullptr)
        != SQLITE_OK)
        database.fail();
}

Statement::Statement(Statement&& other) noexcept
    : database_(other.database_)
    , statement_(std::exchange(other.statement_, nullptr))
    , bound_(other.bound_)
    , names_(std::move(other.names_))
    , expected_(other.expected_)
{
}

Statement::~Statement()
{
    sqlite3_finalize(statement_);
}

Statement& Statement::bind(std::string_view text)
{
    const char* bytes = text.empty() ? "" : text.data(); // a null pointer would bind NULL
    if (sqlite3_bind_text64(statement_, ++bound_, bytes, text.size(), SQLITE_TRANSIENT, SQLITE_UTF8) != SQLITE_OK)
        database_->fail();
    return *this;
}

Statement& Statement::bind(std::int64_t number)
{
    if (sqlite3_bind_int64(statement_, ++bound_, number) != SQLITE_OK)
        database_->fail();
    return *this;
}

Statement& Statement::bind(double number)
{
    if (sqlite3_bind_double(statement_, ++bound_, number) != SQLITE_OK)
        database_->fail();
    return *this;
}

Statement& Statement::bind(const std::optional<std::string>& text)
{
    if (text)
        return bind(std::string_view(*text));
    if (sqlite3_bind_null(statement_, ++bound_) != SQLITE_OK)
        database_->fail();
    return *this;
}

bool Statement::step()
{
    switch (sqlite3_step(statement_)) {
    case SQLITE_ROW:
        return true;
    case SQLITE_DONE:
        return false;
    default:
        database_->fail();
    }
}

void Statement::run()
{
    while (step()) { }
}

std::string Statement::text(std::string_view column) const
{
    return optionalText(column).value_or(std::string());
}

std::optional<std::string> Statement::optionalText(std::string_view column) const
{
    const int at = index(column);
    if (at < 0)
        return std::nullopt;
    const auto* bytes = reinterpret_cast<const char*>(sqlite3_column_text(statement_, at));
    if (bytes == nullptr)
        return std::nullopt;
    return std::string(bytes, static_cast<std::size_t>(sqlite3_column_bytes(statement_, at)));
}

std::int64_t Statement::integer(std::string_view column) const
{
    const int at = index(column);
    return at < 0 ? 0 : sqlite3_column_int64(statement_, at);
}

std::int64_t Statement::firstInteger() const
{
    return sqlite3_column_int64(statement_, 0);
}

/// Readers mostly ask for columns in the order of the table and by their exact names, so the search starts behind the
/// last hit, and the comparison that ignores case comes second.
int Statement::index(std::string_view column) const
{
    if (names_.empty()) {
        for (int at = 0; at < sqlite3_column_count(statement_); ++at)
            names_.emplace_back(sqlite3_column_name(statement_, at));
    }
    if (expected_ < names_.size() && names_[expected_] == column)
        return static_cast<int>(expected_++);
    const auto found = std::find_if(names_.begin(), names_.end(), [&](const std::string& name) {
        return name.size() == column.size()
            && sqlite3_strnicmp(name.data(), column.data(), static_cast<int>(column.size())) == 0;
    });
    if (found == names_.end())
        return -1;
    expected_ = static_cast<std::size_t>(found - names_.begin()) + 1;
    return static_cast<int>(found - names_.begin());
}

Database::Database(const std::filesystem::path& file, Access access, std::chrono::milliseconds longestWait)
    : longestWait_(longestWait)
{
    const int flags = access == Access::readOnly ? SQLITE_OPEN_READWRITE : SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE;
    const int result =
        sqlite3_open_v2(file.c_str(), &connection_, flags | SQLITE_OPEN_NOMUTEX | SQLITE_OPEN_EXRESCODE, nullptr);
    if (result != SQLITE_OK) {
        const DatabaseError error(result, connection_ == nullptr ? "out of memory" : sqlite3_errmsg(connection_),
            {file, {}, connection_ == nullptr ? 0 : sqlite3_system_errno(connection_)});
        sqlite3_close(connection_);
        throw error;
    }
    sqlite3_busy_handler(connection_, &Database::waitForLock, this);
    sqlite3_db_config(connection_, SQLITE_DBCONFIG_ENABLE_FKEY, 1, nullptr);
    if (access == Access::readOnly)
        sqlite3_exec(connection_, "PRAGMA query_only = ON", nullptr, nullptr, nullptr);
}

Database::~Database()
{
    sqlite3_close_v2(connection_);
}

void Database::execute(const std::string& sql)
{
    if (sqlite3_exec(connection_, sql.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK)
        fail();
}

int Database::changes() const
{
    return sqlite3_changes(connection_);
}

std::int64_t Database::totalChanges() const
{
    return sqlite3_total_changes64(connection_);
}

void Database::fail() const
{
    const char* file = sqlite3_db_filename(connection_, "main");
    throw DatabaseError(sqlite3_extended_errcode(connection_), sqlite3_errmsg(connection_),
        {file == nullptr ? "" : file, longestWait_, sqlite3_system_errno(connection_)});
}

/// Called by SQLite while another connection holds the lock; `attempts` starts from 0 for each wait. SQLite's own
/// timeout backs off in longer and longer steps, at which a waiting writer meets free moments ever more rarely.
int Database::waitForLock(void* self, int attempts)
{
    auto& database = *static_cast<Database*>(self);
    const auto now = std::chrono::steady_clock::now();
    if (oneWait != nullptr && oneWait->isOver_)
        return 0;
    if (attempts == 0) {
        const bool isCommit = sqlite3_get_autocommit(database.connection_) == 0;
        database.waitingSince_ = isCommit || database.turns_ == 0 ? now : database.askedFor_;
    }
    if (now - database.waitingSince_ > database.longestWait_) {
        if (oneWait != nullptr)
            oneWait->isOver_ = true;
        return 0;
    }
    std::uniform_int_distribution pause(kShortestPauseMicroseconds, kLongestPauseMicroseconds);
    std::this_thread::sleep_for(std::chrono::microseconds(pause(database.pauses_)));
    return 1;
}

Database::OneWait::OneWait() noexcept
    : outer_(std::exchange(oneWait, this))
{
}

Database::OneWait::~OneWait()
{
    oneWait = outer_;
}

Database::Turn::Turn(Database& database)
    : database_(database)
    , arrived_(std::chrono::steady_clock::now())
    , guard_(database.mutex_)
{
    if (database.turns_++ == 0)
        database.askedFor_ = arrived_;
}

Database::Transaction::Transaction(Database& database)
    : database_(database)
{
    database_.execute("BEGIN IMMEDIATE");
}

Database::Transaction::~Transaction()
{
    // Some failures have rolled back already.
    if (open_ && sqlite3_get_autocommit(database_.connection_) == 0)
        sqlite3_exec(database_.connection_, "ROLLBACK", nullptr, nullptr, nullptr);
}

void Database::Transaction::commit()
{
    database_.execute("COMMIT");
    open_ = false;
}

} // namespace mervo
