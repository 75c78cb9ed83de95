#include "platform/desk/chat/ChatStore.h"

#include "platform/files.h"
#include "platform/folders.h"

#include <algorithm>
#include <fmt/format.h>
#include <memory>
#include <optional>
#include <sqlite3.h>
#include <stdexcept>
#include <sys/random.h>
#include <variant>

namespace mervo::desk {
namespace {

constexpr int kPatience = 10'000; // milliseconds
constexpr std::int64_t kEpoch = 978'307'200; // 2001-01-01 UTC in Unix seconds
constexpr std::int64_t kNanoseconds = 1'000'000'000;
constexpr const char* kService = "iMessage";

constexpr const char* kTables = R"SQL(
CREATE TABLE IF NOT EXISTS handle (ROWID INTEGER PRIMARY KEY AUTOINCREMENT, id TEXT NOT NULL, service TEXT NOT NULL,
    UNIQUE (id, service));
CREATE TABLE IF NOT EXISTS message (ROWID INTEGER PRIMARY KEY AUTOINCREMENT, guid TEXT UNIQUE NOT NULL, text TEXT,
    handle_id INTEGER DEFAULT 0, service TEXT, date INTEGER, is_from_me INTEGER DEFAULT 0, is_sent INTEGER DEFAULT 0);
CREATE TABLE IF NOT EXISTS chat (ROWID INTEGER PRIMARY KEY AUTOINCREMENT, guid TEXT UNIQUE NOT NULL,
    chat_identifier TEXT, service_name TEXT);
CREATE TABLE IF NOT EXISTS chat_handle_join (chat_id INTEGER, handle_id INTEGER, UNIQUE (chat_id, handle_id));
CREATE TABLE IF NOT EXISTS chat_message_join (chat_id INTEGER, message_id INTEGER, message_date INTEGER DEFAULT 0,
    PRIMARY KEY (chat_id, message_id));
)SQL";

using Cell = std::variant<std::int64_t, std::string>;

struct Column {
    const char* name;
    Cell value;
};

class Database {
public:
    Database(const std::filesystem::path& file, int flags)
    {
        const int status = sqlite3_open_v2(file.c_str(), &handle_, flags | SQLITE_OPEN_NOMUTEX, nullptr);
        if (status != SQLITE_OK) {
            const std::string words = sqlite3_errmsg(handle_);
            sqlite3_close_v2(handle_);
            throw std::runtime_error(words);
        }
        sqlite3_busy_timeout(handle_, kPatience);
    }
    Database(const Database&) = delete;
    Database& operator=(const Database&) = delete;
    ~Database() { sqlite3_close_v2(handle_); }

    void run(const char* sql)
    {
        if (sqlite3_exec(handle_, sql, nullptr, nullptr, nullptr) != SQLITE_OK)
            fail();
    }

    /// The first column of every row.
    std::vector<std::string> texts(const std::string& sql, const std::vector<Cell>& values = {})
    {
        const auto statement = prepared(sql, values);
        std::vector<std::string> rows;
        int status = 0;
        while ((status = sqlite3_step(statement.get())) == SQLITE_ROW) {
            if (const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(statement.get(), 0)))
                rows.emplace_back(text);
        }
        if (status != SQLITE_DONE)
            fail();
        return rows;
    }

    /// Inserts what the table has columns for. The new row's number; 0 when there is no such table.
    std::int64_t insert(const std::string& table, const std::vector<Column>& columns, const char* verb = "INSERT")
    {
        const auto known = texts("SELECT name FROM pragma_table_info(?)", {table});
        std::string names, places;
        std::vector<Cell> values;
        for (const Column& column : columns) {
            if (std::find(known.begin(), known.end(), column.name) == known.end())
                continue;
            names += (names.empty() ? "" : ", ") + std::string(column.name);
            places += places.empty() ? "?" : ", ?";
            values.push_back(column.value);
        }
        if (values.empty())
            return 0;
        texts(fmt::format("{} INTO {} ({}) VALUES ({})", verb, table, names, places), values);
        return sqlite3_last_insert_rowid(handle_);
    }

private:
    struct Finalize {
        void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
    };

    std::unique_ptr<sqlite3_stmt, Finalize> prepared(const std::string& sql, const std::vector<Cell>& values)
    {
        sqlite3_stmt* raw = nullptr;
        if (sqlite3_prepare_v2(handle_, sql.c_str(), -1, &raw, nullptr) != SQLITE_OK)
            fail();
        std::unique_ptr<sqlite3_stmt, Finalize> statement(raw);
        int place = 0;
        for (const Cell& value : values) {
            ++place;
            if (const auto* number = std::get_if<std::int64_t>(&value)) {
                sqlite3_bind_int64(raw, place, *number);
            } else {
                sqlite3_bind_text(
                    raw, place, std::get<std::string>(value).c_str(), -1, SQLITE_TRANSIENT); // the text has no NUL
            }
        }
        return statement;
    }

    [[noreturn]] void fail() { throw std::runtime_error(sqlite3_errmsg(handle_)); }

    sqlite3* handle_ = nullptr;
};

std::string newGuid()
{
    std::uint64_t random[2] = {};
    if (getrandom(random, sizeof random, 0) != sizeof random)
        throw std::runtime_error("the system has no random numbers");
    return fmt::format("{:016X}{:016X}", random[0], random[1]);
}

/// The row with this text, or a new one.
std::int64_t rowFor(Database& database, const std::string& table, const char* key, const std::string& text,
    const std::vector<Column>& columns)
{
    const auto found = database.texts(
        fmt::format("SELECT ROWID FROM {} WHERE replace({}, ' ', '') = replace(?, ' ', '') LIMIT 1", table, key),
        {text});
    return found.empty() ? database.insert(table, columns) : std::stoll(found.front());
}

bool hasTable(Database& database, const char* name)
{
    return !database.texts("SELECT name FROM sqlite_master WHERE type = 'table' AND name = ?", {std::string(name)})
                .empty();
}

void addToChat(Database& database, const std::string& handle, std::int64_t who, std::int64_t message, std::int64_t date)
{
    if (!hasTable(database, "chat"))
        return;
    const std::int64_t chat = rowFor(database, "chat", "chat_identifier", handle,
        {{"guid", std::string(kService) + ";-;" + handle}, {"chat_identifier", handle},
            {"service_name", std::string(kService)}});
    database.insert("chat_handle_join", {{"chat_id", chat}, {"handle_id", who}}, "INSERT OR IGNORE");
    database.insert("chat_message_join", {{"chat_id", chat}, {"message_id", message}, {"message_date", date}});
}

} // namespace

std::filesystem::path chatFile()
{
    return platform::userHome() / "Library" / "Messages" / "chat.db";
}

ChatStore::ChatStore(std::filesystem::path file)
    : file_(std::move(file))
{
}

std::vector<std::string> ChatStore::handles() const
{
    if (!std::filesystem::exists(file_))
        return {};
    Database database(file_, SQLITE_OPEN_READONLY);
    return hasTable(database, "handle") ? database.texts("SELECT DISTINCT id FROM handle ORDER BY ROWID")
                                        : std::vector<std::string>();
}

void ChatStore::addSent(const std::string& handle, const std::string& text, std::int64_t unixSeconds) const
{
    if (const auto error = platform::createPrivateFolder(file_.parent_path()))
        throw std::runtime_error(error.message());
    Database database(file_, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE);
    database.run("BEGIN IMMEDIATE");
    if (!hasTable(database, "message"))
        database.run(kTables);
    const std::int64_t date = (unixSeconds - kEpoch) * kNanoseconds;
    const std::int64_t who =
        rowFor(database, "handle", "id", handle, {{"id", handle}, {"service", std::string(kService)}});
    const std::int64_t message = database.insert("message",
        {{"guid", newGuid()}, {"text", text}, {"handle_id", who}, {"service", std::string(kService)}, {"date", date},
            {"is_from_me", std::int64_t(1)}, {"is_sent", std::int64_t(1)}});
    addToChat(database, handle, who, message, date);
    database.run("COMMIT");
}

} // namespace mervo::desk
