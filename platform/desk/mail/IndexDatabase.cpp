#include "platform/desk/mail/IndexDatabase.h"

#include "platform/desk/mail/MessageRecord.h"
#include "platform/sqlite/Blob.h"
#include "platform/sqlite/Statement.h"

#include <cstring>
#include <type_traits>

namespace mervo::desk {
namespace {

constexpr std::chrono::seconds kWaitForLock(10);
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

IndexError::IndexError(const std::string& message)
    : std::runtime_error(message)
    , damaged_(true)
{
}

/// What does not fit the tables is damage too: a new file would have the right ones.
IndexError::IndexError(const sqlite::Error& reason)
    : std::runtime_error(reason.what())
    , damaged_(reason.isDamage() || reason.isMisfit())
{
}

IndexDatabase::IndexDatabase(const std::filesystem::path& file)
    : connection_(file.empty() ? ":memory:" : file, sqlite::Access::readWrite, kWaitForLock)
{
    connection_.execute("PRAGMA page_size = 32768; PRAGMA synchronous = OFF; PRAGMA journal_mode = TRUNCATE; "
                        "PRAGMA cache_size = -65536");
    const std::int64_t version = schemaVersion();
    if (version == 0) {
        sqlite::Transaction transaction(connection_, sqlite::Transaction::Lock::immediate);
        if (schemaVersion() == 0) // else another process was first
            connection_.execute(kSchema);
        transaction.commit();
    } else if (version != kSchemaVersion) {
        throw IndexError("The mail index was written by another version.");
    }
}

std::int64_t IndexDatabase::schemaVersion()
{
    sqlite::Statement query(connection_, "PRAGMA user_version");
    query.step();
    return query.integer(0);
}

std::optional<IndexDatabase::Folder> IndexDatabase::folder(const std::filesystem::path& maildir)
{
    sqlite::Statement query(connection_, "SELECT id, stamp, scanned, generation, content FROM folder WHERE path = ?");
    query.bindBytes(maildir.native());
    if (!query.step())
        return std::nullopt;
    Folder found;
    found.id = query.integer(0);
    const std::string_view stamp = query.bytes(1);
    if (stamp.size() != sizeof found.stamp)
        throw IndexError("The mail index is damaged.");
    std::memcpy(&found.stamp, stamp.data(), sizeof found.stamp);
    found.scanned = query.integer(2);
    found.generation = query.integer(3);
    found.content = static_cast<std::uint64_t>(query.integer(4));
    return found;
}

std::string_view IndexDatabase::readBlob(std::int64_t row, RecordMemory& memory)
{
    const sqlite::Blob blob(connection_, "chunk", "data", row);
    char* place = memory.take(blob.size());
    blob.read(place);
    return {place, blob.size()};
}

RecordChunks IndexDatabase::readChunks(const Folder& folder)
{
    RecordChunks chunks;
    if (folder.id == 0)
        return chunks;
    sqlite::Statement total(connection_, "SELECT total(length(data)) FROM chunk WHERE folder = ?");
    total.bind(folder.id).step();
    const auto memory = std::make_shared<RecordMemory>(static_cast<std::size_t>(total.integer(0)));
    sqlite::Statement query(
        connection_, "SELECT rowid, number, fingerprint FROM chunk WHERE folder = ? ORDER BY number");
    query.bind(folder.id);
    std::uint64_t content = 0;
    while (query.step()) {
        const std::string_view chunk = readBlob(query.integer(0), *memory);
        const auto print = static_cast<std::uint64_t>(query.integer(2));
        if (fingerprint(chunk) != print)
            throw IndexError("The mail index is damaged.");
        content = combined(content, query.integer(1), print);
        chunks.emplace(query.integer(1), std::make_shared<RecordChunk>(memory, chunk));
    }
    if (content != folder.content)
        throw IndexError("The mail index is damaged.");
    return chunks;
}

IndexDatabase::Reading::Reading(IndexDatabase& database)
    : transaction_(database.connection_, sqlite::Transaction::Lock::deferred)
{
}

IndexDatabase::Change::Change(IndexDatabase& database)
    : connection_(database.connection_)
    , transaction_(connection_, sqlite::Transaction::Lock::immediate)
{
}

void IndexDatabase::Change::write(Folder& folder, const std::filesystem::path& maildir)
{
    if (folder.id == 0) {
        sqlite::Statement insert(
            connection_, "INSERT INTO folder(path, stamp, scanned, generation, content) VALUES(?, x'', 0, 0, 0)");
        insert.bindBytes(maildir.native()).run();
        folder.id = connection_.lastInsertedRow();
    }
    sqlite::Statement update(
        connection_, "UPDATE folder SET stamp = ?, scanned = ?, generation = ?, content = ? WHERE id = ?");
    update.bindBytes(bytesOf(folder.stamp)).bind(folder.scanned).bind(folder.generation);
    update.bind(static_cast<std::int64_t>(folder.content)).bind(folder.id).run();
}

void IndexDatabase::Change::write(const Folder& folder, std::int64_t chunk, std::string_view data)
{
    sqlite::Statement query(
        connection_, "INSERT OR REPLACE INTO chunk(folder, number, fingerprint, data) VALUES(?, ?, ?, ?)");
    query.bind(folder.id).bind(chunk).bind(static_cast<std::int64_t>(fingerprint(data))).bindBytes(data).run();
}

void IndexDatabase::Change::removeChunk(const Folder& folder, std::int64_t number)
{
    sqlite::Statement(connection_, "DELETE FROM chunk WHERE folder = ? AND number = ?")
        .bind(folder.id)
        .bind(number)
        .run();
}

std::uint64_t IndexDatabase::Change::contentOf(const Folder& folder)
{
    sqlite::Statement query(connection_, "SELECT number, fingerprint FROM chunk WHERE folder = ? ORDER BY number");
    query.bind(folder.id);
    std::uint64_t content = 0;
    while (query.step())
        content = combined(content, query.integer(0), static_cast<std::uint64_t>(query.integer(1)));
    return content;
}

std::uint32_t IndexDatabase::Change::takeIds(std::size_t count)
{
    sqlite::Statement query(connection_, "UPDATE counter SET next = next + ? RETURNING next");
    if (!query.bind(static_cast<std::int64_t>(count)).step())
        throw IndexError("The mail index is damaged.");
    const std::int64_t next = query.integer(0);
    query.run();
    return static_cast<std::uint32_t>(next - static_cast<std::int64_t>(count));
}

void IndexDatabase::Change::commit()
{
    transaction_.commit();
}

} // namespace mervo::desk
