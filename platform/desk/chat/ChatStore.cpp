#include "platform/desk/chat/ChatStore.h"

#include "platform/files.h"
#include "platform/folders.h"
#include "platform/sqlite/Connection.h"
#include "platform/sqlite/Statement.h"
#include "platform/sqlite/Transaction.h"

#include <algorithm>
#include <fmt/format.h>
#include <stdexcept>
#include <sys/random.h>
#include <variant>

namespace mervo::desk {
namespace {

constexpr std::chrono::seconds kWaitForLock(10);
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

/// The first column of every row that has one.
std::vector<std::string> texts(
    sqlite::Connection& database, const std::string& sql, const std::vector<Cell>& values = {})
{
    sqlite::Statement statement(database, sql);
    for (const Cell& value : values)
        std::visit([&](const auto& cell) { statement.bind(cell); }, value);
    std::vector<std::string> rows;
    while (statement.step()) {
        if (const auto text = statement.optionalText(0))
            rows.emplace_back(text->c_str()); // another program's text may hold a NUL: it ends there
    }
    return rows;
}

/// Inserts what the table has columns for. The new row's number; 0 when there is no such table.
std::int64_t insert(sqlite::Connection& database, const std::string& table, const std::vector<Column>& columns,
    const char* verb = "INSERT")
{
    const auto known = texts(database, "SELECT name FROM pragma_table_info(?)", {table});
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
    texts(database, fmt::format("{} INTO {} ({}) VALUES ({})", verb, table, names, places), values);
    return database.lastInsertedRow();
}

std::string newGuid()
{
    std::uint64_t random[2] = {};
    if (getrandom(random, sizeof random, 0) != sizeof random)
        throw std::runtime_error("the system has no random numbers");
    return fmt::format("{:016X}{:016X}", random[0], random[1]);
}

/// The row with this text, or a new one.
std::int64_t rowFor(sqlite::Connection& database, const std::string& table, const char* key, const std::string& text,
    const std::vector<Column>& columns)
{
    const auto found = texts(database,
        fmt::format("SELECT ROWID FROM {} WHERE replace({}, ' ', '') = replace(?, ' ', '') LIMIT 1", table, key),
        {text});
    return found.empty() ? insert(database, table, columns) : std::stoll(found.front());
}

bool hasTable(sqlite::Connection& database, const char* name)
{
    return !texts(database, "SELECT name FROM sqlite_master WHERE type = 'table' AND name = ?", {std::string(name)})
                .empty();
}

void addToChat(
    sqlite::Connection& database, const std::string& handle, std::int64_t who, std::int64_t message, std::int64_t date)
{
    if (!hasTable(database, "chat"))
        return;
    const std::int64_t chat = rowFor(database, "chat", "chat_identifier", handle,
        {{"guid", std::string(kService) + ";-;" + handle}, {"chat_identifier", handle},
            {"service_name", std::string(kService)}});
    insert(database, "chat_handle_join", {{"chat_id", chat}, {"handle_id", who}}, "INSERT OR IGNORE");
    insert(database, "chat_message_join", {{"chat_id", chat}, {"message_id", message}, {"message_date", date}});
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
    sqlite::Connection database(file_, sqlite::Access::readOnlyFile, kWaitForLock);
    return hasTable(database, "handle") ? texts(database, "SELECT DISTINCT id FROM handle ORDER BY ROWID")
                                        : std::vector<std::string>();
}

void ChatStore::addSent(const std::string& handle, const std::string& text, std::int64_t unixSeconds) const
{
    if (const auto error = platform::createPrivateFolder(file_.parent_path()))
        throw std::runtime_error(error.message());
    sqlite::Connection database(file_, sqlite::Access::readWrite, kWaitForLock);
    sqlite::Transaction transaction(database, sqlite::Transaction::Lock::immediate);
    if (!hasTable(database, "message"))
        database.execute(kTables);
    const std::int64_t date = (unixSeconds - kEpoch) * kNanoseconds;
    const std::int64_t who =
        rowFor(database, "handle", "id", handle, {{"id", handle}, {"service", std::string(kService)}});
    const std::int64_t message = insert(database, "message",
        {{"guid", newGuid()}, {"text", text}, {"handle_id", who}, {"service", std::string(kService)}, {"date", date},
            {"is_from_me", std::int64_t(1)}, {"is_sent", std::int64_t(1)}});
    addToChat(database, handle, who, message, date);
    transaction.commit();
}

} // namespace mervo::desk
