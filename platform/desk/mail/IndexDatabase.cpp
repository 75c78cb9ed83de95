#include "platform/desk/mail/IndexDatabase.h"

#include "platform/desk/mail/MessageRecord.h"

#include <cstring>
#include <sqlite3.h>
#include <type_traits>

namespace mervo::desk {
namespace {

constexpr int kWaitForLock = 10'000; // milliseconds
constexpr int kSchemaVersion = 2;

constexpr const char* kSchema = R"sql(
        CREATE TABLE folder(id INTEGER PRIMARY KEY, path BLOB NOT NULL UNIQUE, stamp BLOB NOT NULL,
            scanned INTEGER NOT NULL, generation INTEGER NOT NULL, content INTEGER NOT NULL);
        CREATE TABLE chunk(folder INTEGER NOT NULL, number INTEGER NOT NULL, fingerprint INTEGER NOT NULL,
            data BLOB NOT NULL);
    CREATE UNIQUE INDEX chunks_of_folder ON chunk(folder, number);
        CREATE TABLE counter(next INTEGER NOT NULL);
        INSERT INTO counter VALUES(1 + abs(random() % 268435456));
        PRAGMA user_version = 2;
    )sql";

bool meansDamage(int code)
{
    const int primary = code & 0xFF;
    return primary == SQLITE_CORRUPT || primary == SQLITE_NOTADB || primary == SQLITE_SCHEMA || primary == SQLITE_ERROR
        || primary == SQLITE_MISMATCH || primary == SQLITE_CONSTRAINT;
}

std::uint64_t combined(std::uint64_t content, std::int64_t number, std::uint64_t print)
{
    return (content ^ print) * 0x9E3779B97F4A7C15U + static_cast<std::uint64_t>(number);
}

std::string_view bytesOf(const MaildirStamp& stamp)
{
    static_assert(sizeof(MaildirStamp) == 32 && std::is_trivially_copyable_v<MaildirStamp>);
    return {reinterpret_cast<const char*>(&stamp), sizeof stamp};
}

} // namespace

IndexError::IndexError(const std::string& message, bool damaged)
    : std::runtime_error(message)
    , damaged_(damaged)
{
}

/// One statement, made ready and used up in one place.
class IndexDatabase::Query {
public:
    Query(IndexDatabase& database, const char* sql)
        : database_(database)
    {
        if (const int code = sqlite3_prepare_v2(database.handle_, sql, -1, &statement_, nullptr); code != SQLITE_OK)
            database.fail(code);
    }
    Query(const Query&) = delete;
    Query& operator=(const Query&) = delete;
    ~Query() { sqlite3_finalize(statement_); }

    Query& bind(int at, std::int64_t value)
    {
        sqlite3_bind_int64(statement_, at, value);
        return *this;
    }
    Query& bind(int at, std::string_view bytes) // the bytes must outlive the query
    {
        if (sqlite3_bind_blob64(statement_, at, bytes.data(), bytes.size(), SQLITE_STATIC) != SQLITE_OK)
            database_.fail(SQLITE_TOOBIG);
        return *this;
    }
    bool step()
    {
        const int code = sqlite3_step(statement_);
        if (code != SQLITE_ROW && code != SQLITE_DONE)
            database_.fail(code);
        return code == SQLITE_ROW;
    }
    std::int64_t integer(int column) { return sqlite3_column_int64(statement_, column); }
    std::string_view bytes(int column)
    {
        const void* data = sqlite3_column_blob(statement_, column);
        const int size = sqlite3_column_bytes(statement_, column);
        if (data == nullptr && size > 0)
            database_.fail(SQLITE_NOMEM);
        return {static_cast<const char*>(data), static_cast<std::size_t>(size)};
    }

private:
    IndexDatabase& database_;
    sqlite3_stmt* statement_ = nullptr;
};

IndexDatabase::IndexDatabase(const std::filesystem::path& file)
{
    const int flags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX;
    const int code = sqlite3_open_v2(file.empty() ? ":memory:" : file.c_str(), &handle_, flags, nullptr);
    try {
        if (code != SQLITE_OK)
            fail(code);
        sqlite3_busy_timeout(handle_, kWaitForLock);
        execute("PRAGMA page_size = 32768; PRAGMA synchronous = OFF; PRAGMA journal_mode = TRUNCATE; PRAGMA cache_size "
                "= -65536");
        Query version(*this, "PRAGMA user_version");
        version.step();
        if (version.integer(0) == 0) {
            execute("BEGIN IMMEDIATE");
            Query again(*this, "PRAGMA user_version"); // another process may have been first
            again.step();
            const bool isEmpty = again.integer(0) == 0;
            execute(isEmpty ? kSchema : "SELECT 1");
            execute("COMMIT");
        } else if (version.integer(0) != kSchemaVersion) {
            throw IndexError("The mail index was written by another version.", true);
        }
    } catch (...) {
        sqlite3_close_v2(handle_);
        throw;
    }
}

IndexDatabase::~IndexDatabase()
{
    sqlite3_close_v2(handle_);
}

std::optional<IndexDatabase::Folder> IndexDatabase::folder(const std::filesystem::path& maildir)
{
    Query query(*this, "SELECT id, stamp, scanned, generation, content FROM folder WHERE path = ?");
    query.bind(1, maildir.native());
    if (!query.step())
        return std::nullopt;
    Folder found;
    found.id = query.integer(0);
    const std::string_view stamp = query.bytes(1);
    if (stamp.size() != sizeof found.stamp)
        throw IndexError("The mail index is damaged.", true);
    std::memcpy(&found.stamp, stamp.data(), sizeof found.stamp);
    found.scanned = query.integer(2);
    found.generation = query.integer(3);
    found.content = static_cast<std::uint64_t>(query.integer(4));
    return found;
}

/// One blob straight to its place: a column's value would be put together in memory a second time.
std::string_view IndexDatabase::readBlob(std::int64_t row, RecordMemory& memory)
{
    sqlite3_blob* blob = nullptr;
    if (const int code = sqlite3_blob_open(handle_, "main", "chunk", "data", row, 0, &blob); code != SQLITE_OK)
        fail(code);
    const std::unique_ptr<sqlite3_blob, int (*)(sqlite3_blob*)> owner(blob, sqlite3_blob_close);
    const int size = sqlite3_blob_bytes(blob);
    char* place = memory.take(static_cast<std::size_t>(size));
    if (const int code = sqlite3_blob_read(blob, place, size, 0); code != SQLITE_OK)
        fail(code);
    return {place, static_cast<std::size_t>(size)};
}

RecordChunks IndexDatabase::readChunks(const Folder& folder)
{
    RecordChunks chunks;
    if (folder.id == 0)
        return chunks;
    Query total(*this, "SELECT total(length(data)) FROM chunk WHERE folder = ?");
    total.bind(1, folder.id).step();
    const auto memory = std::make_shared<RecordMemory>(static_cast<std::size_t>(total.integer(0)));
    Query query(*this, "SELECT rowid, number, fingerprint FROM chunk WHERE folder = ? ORDER BY number");
    query.bind(1, folder.id);
    std::uint64_t content = 0;
    while (query.step()) {
        const std::string_view chunk = readBlob(query.integer(0), *memory);
        const auto print = static_cast<std::uint64_t>(query.integer(2));
        if (fingerprint(chunk) != print)
            throw IndexError("The mail index is damaged.", true);
        content = combined(content, query.integer(1), print);
        chunks.emplace(query.integer(1), std::make_shared<RecordChunk>(memory, chunk));
    }
    if (content != folder.content)
        throw IndexError("The mail index is damaged.", true);
    return chunks;
}

void IndexDatabase::execute(const char* sql)
{
    if (const int code = sqlite3_exec(handle_, sql, nullptr, nullptr, nullptr); code != SQLITE_OK)
        fail(code);
}

void IndexDatabase::fail(int code)
{
    const char* words = handle_ == nullptr ? sqlite3_errstr(code) : sqlite3_errmsg(handle_);
    throw IndexError(words, meansDamage(code));
}

IndexDatabase::Reading::Reading(IndexDatabase& database)
    : database_(database)
{
    database_.execute("BEGIN");
}

IndexDatabase::Reading::~Reading()
{
    sqlite3_exec(database_.handle_, "COMMIT", nullptr, nullptr, nullptr);
}

IndexDatabase::Change::Change(IndexDatabase& database)
    : database_(database)
{
    database_.execute("BEGIN IMMEDIATE");
}

IndexDatabase::Change::~Change()
{
    if (!done_)
        sqlite3_exec(database_.handle_, "ROLLBACK", nullptr, nullptr, nullptr);
}

void IndexDatabase::Change::write(Folder& folder, const std::filesystem::path& maildir)
{
    if (folder.id == 0) {
        Query insert(
            database_, "INSERT INTO folder(path, stamp, scanned, generation, content) VALUES(?, x'', 0, 0, 0)");
        insert.bind(1, maildir.native()).step();
        folder.id = sqlite3_last_insert_rowid(database_.handle_);
    }
    Query update(database_, "UPDATE folder SET stamp = ?, scanned = ?, generation = ?, content = ? WHERE id = ?");
    update.bind(1, bytesOf(folder.stamp)).bind(2, folder.scanned).bind(3, folder.generation);
    update.bind(4, static_cast<std::int64_t>(folder.content)).bind(5, folder.id).step();
}

void IndexDatabase::Change::write(const Folder& folder, std::int64_t chunk, std::string_view data)
{
    Query query(database_, "INSERT OR REPLACE INTO chunk(folder, number, fingerprint, data) VALUES(?, ?, ?, ?)");
    query.bind(1, folder.id).bind(2, chunk);
    query.bind(3, static_cast<std::int64_t>(fingerprint(data))).bind(4, data).step();
}

void IndexDatabase::Change::removeChunk(const Folder& folder, std::int64_t number)
{
    Query(database_, "DELETE FROM chunk WHERE folder = ? AND number = ?").bind(1, folder.id).bind(2, number).step();
}

std::uint64_t IndexDatabase::Change::contentOf(const Folder& folder)
{
    Query query(database_, "SELECT number, fingerprint FROM chunk WHERE folder = ? ORDER BY number");
    query.bind(1, folder.id);
    std::uint64_t content = 0;
    while (query.step())
        content = combined(content, query.integer(0), static_cast<std::uint64_t>(query.integer(1)));
    return content;
}

std::uint32_t IndexDatabase::Change::takeIds(std::size_t count)
{
    Query query(database_, "UPDATE counter SET next = next + ? RETURNING next");
    if (!query.bind(1, static_cast<std::int64_t>(count)).step())
        throw IndexError("The mail index is damaged.", true);
    const std::int64_t next = query.integer(0);
    while (query.step()) { }
    return static_cast<std::uint32_t>(next - static_cast<std::int64_t>(count));
}

void IndexDatabase::Change::commit()
{
    database_.execute("COMMIT");
    done_ = true;
}

} // namespace mervo::desk
