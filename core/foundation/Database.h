#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <mutex>
#include <optional>
#include <random>
#include <stdexcept>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

struct sqlite3;
struct sqlite3_stmt;

namespace mervo {

/// A failure of the database. `what()` is SQLite's own text; `sentence()` is for people: what is wrong with which file,
/// and the remedy.
class DatabaseError final : public std::runtime_error {
public:
    struct Circumstances {
        std::filesystem::path file; ///< empty: in memory
        std::chrono::milliseconds waited{}; ///< for a lock, at most
        int systemError = 0; ///< errno of the call behind it; 0 when there was none
    };
    DatabaseError(int code, const std::string& message, Circumstances circumstances);
    int code() const noexcept { return code_; }
    bool isDamage() const noexcept; ///< the file is no database, or its pages are wrong
    std::string fault() const;
    std::string remedy() const;
    std::string sentence() const { return fault() + "; " + remedy(); }

private:
    int code_;
    Circumstances circumstances_;
};

class Database;

/// A prepared statement: bind in order, then step. Valid only inside the closure of `Database::read` or `write`.
class Statement {
public:
    Statement(const Database& database, std::string_view sql);
    Statement(const Statement&) = delete;
    Statement& operator=(const Statement&) = delete;
    Statement& operator=(Statement&&) = delete;
    Statement(Statement&& other) noexcept;
    ~Statement();

    Statement& bind(std::string_view text);
    Statement& bind(const char* text) { return bind(std::string_view(text)); }
    Statement& bind(const std::string& text) { return bind(std::string_view(text)); }
    Statement& bind(std::int64_t number);
    Statement& bind(int number) { return bind(std::int64_t{number}); }
    Statement& bind(double number);
    Statement& bind(const std::optional<std::string>& text); ///< NULL when absent

    /// True while there is a row. Throws DatabaseError.
    bool step();
    /// Runs a statement that gives no rows. Throws DatabaseError.
    void run();

    /// Columns by name, ignoring case as SQL does; a column that is not there reads as NULL.
    std::string text(std::string_view column) const;
    std::optional<std::string> optionalText(std::string_view column) const;
    std::int64_t integer(std::string_view column) const;
    /// The first column of the row as a number, 0 for NULL.
    std::int64_t firstInteger() const;

private:
    int index(std::string_view column) const;

    const Database* database_;
    sqlite3_stmt* statement_ = nullptr;
    int bound_ = 0;
    mutable std::vector<std::string> names_; ///< of the columns, known from the first row on
    mutable std::size_t expected_ = 0; ///< where the next column asked for most likely stands
};

/// One serial connection to one SQLite file. Any thread may use it; closures run one at a time.
///
/// A lock that another connection holds is waited for: up to 10 s (or what the opener says), asked again after 0.5 to
/// 1.5 ms at random, so that many writers at once each get their turn. The time counts from the call of `read` or
/// `write`, so that threads that queue for the connection do not wait one after the other; a commit has the whole time
/// anew. Foreign keys are on; the journal is SQLite's default.
class Database {
public:
    enum class Access { readWrite, readOnly };
    static constexpr std::chrono::milliseconds kUsualWait = std::chrono::seconds(10);

    /// ":memory:" gives a database of its own. Throws DatabaseError. Read-only access never creates a file and refuses
    /// every statement that writes; it still completes the roll-back that a killed writer left behind.
    explicit Database(const std::filesystem::path& file, Access access = Access::readWrite,
        std::chrono::milliseconds longestWait = kUsualWait);
    Database(const Database&) = delete;
    Database& operator=(const Database&) = delete;
    ~Database();

    /// Runs the closure outside of any transaction: reads of one statement each.
    template <typename Closure>
    auto read(Closure&& closure);

    /// Runs the closure as one transaction (BEGIN IMMEDIATE), rolled back when it throws.
    template <typename Closure>
    auto write(Closure&& closure);

    Statement prepare(std::string_view sql) { return Statement(*this, sql); }
    void execute(const std::string& sql);
    int changes() const;
    /// Rows that this connection has inserted, changed or deleted since it was opened, also what was rolled back.
    std::int64_t totalChanges() const;

    /// While it lives, its thread waits for a lock in vain once at most: after that whatever is locked fails at once.
    class OneWait;

private:
    friend class Statement;
    class Transaction;
    class Turn;

    [[noreturn]] void fail() const;
    static int waitForLock(void* self, int attempts);

    std::recursive_mutex mutex_;
    sqlite3* connection_ = nullptr;
    std::chrono::milliseconds longestWait_;
    std::chrono::steady_clock::time_point askedFor_; ///< when the closure that runs was handed in
    int turns_ = 0; ///< closures that run, one inside the other
    std::chrono::steady_clock::time_point waitingSince_;
    std::minstd_rand pauses_{std::random_device{}()};
};

class Database::OneWait {
public:
    OneWait() noexcept;
    ~OneWait();
    OneWait(const OneWait&) = delete;
    OneWait& operator=(const OneWait&) = delete;

private:
    friend class Database;
    OneWait* outer_;
    bool isOver_ = false;
};

/// The connection, for one thread.
class Database::Turn {
public:
    explicit Turn(Database& database);
    ~Turn() { --database_.turns_; }

private:
    Database& database_;
    std::chrono::steady_clock::time_point arrived_;
    std::scoped_lock<std::recursive_mutex> guard_;
};

class Database::Transaction {
public:
    explicit Transaction(Database& database);
    ~Transaction(); ///< rolls back what was not committed
    void commit();

private:
    Database& database_;
    bool open_ = true;
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
    Transaction transaction(*this);
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
