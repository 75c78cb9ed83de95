#pragma once

#include "platform/sqlite/Connection.h"
#include "platform/sqlite/Error.h"
#include "platform/sqlite/Statement.h"
#include "platform/sqlite/Transaction.h"

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <mutex>
#include <string>
#include <string_view>
#include <type_traits>

namespace mervo {

using sqlite::Statement; ///< valid only inside the closure of `Database::read` or `write`

/// One serial connection to one SQLite file. Any thread may use it; closures run one at a time. Throws sqlite::Error,
/// for which DatabaseFailure has the words.
///
/// A lock that another connection holds is waited for: up to 10 s, or what the opener says. The time counts from the
/// call of `read` or `write`, so that threads that queue for the connection do not wait one after the other; a commit
/// has the whole time anew. Foreign keys are on; the journal is SQLite's default.
class Database {
public:
    using Access = sqlite::Access;
    using OneWait = sqlite::OneWait;
    static constexpr std::chrono::milliseconds kUsualWait = std::chrono::seconds(10);

    /// ":memory:" gives a database of its own.
    explicit Database(const std::filesystem::path& file, Access access = Access::readWrite,
        std::chrono::milliseconds longestWait = kUsualWait);
    Database(const Database&) = delete;
    Database& operator=(const Database&) = delete;
    ~Database() = default;

    /// Runs the closure outside of any transaction: reads of one statement each.
    template <typename Closure>
    auto read(Closure&& closure);

    /// Runs the closure as one transaction (BEGIN IMMEDIATE), rolled back when it throws.
    template <typename Closure>
    auto write(Closure&& closure);

    Statement prepare(std::string_view sql) { return Statement(connection_, sql); }
    void execute(const std::string& sql) { connection_.execute(sql); }
    int changes() const { return connection_.changes(); }
    /// Rows that this connection has inserted, changed or deleted since it was opened, also what was rolled back.
    std::int64_t totalChanges() const { return connection_.totalChanges(); }

private:
    class Turn;

    std::recursive_mutex mutex_;
    sqlite::Connection connection_;
    int turns_ = 0; ///< closures that run, one inside the other
};

/// The connection, for one thread.
class Database::Turn {
public:
    explicit Turn(Database& database);
    ~Turn();
    Turn(const Turn&) = delete;
    Turn& operator=(const Turn&) = delete;

private:
    Database& database_;
    std::chrono::steady_clock::time_point arrived_;
    std::scoped_lock<std::recursive_mutex> guard_;
};

template <typename Closure>
auto Database::read(Closure&& closure)
{
    const Turn turn(*this);
    return closure(*this);
}

template <typename Closure>
auto Database::write(Closure&& closure)
{
    const Turn turn(*this);
    sqlite::Transaction transaction(connection_, sqlite::Transaction::Lock::immediate);
    if constexpr (std::is_void_v<decltype(closure(*this))>) {
        closure(*this);
        transaction.commit();
    } else {
        auto result = closure(*this);
        transaction.commit();
        return result;
    }
}

} // namespace mervo
