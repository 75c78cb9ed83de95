#include "core/foundation/MervoDB.h"

#include "core/foundation/ConfigDir.h"
#include "platform/files.h"

#include <array>
#include <mutex>

namespace mervo {

namespace {

struct Migration {
    const char* identifier;
    const char* statements;
};

/// In their order. An identifier that has ever been in a release keeps its meaning for good.
constexpr std::array kMigrations{
    Migration{"audit_v1", R"(
CREATE TABLE audit (
    id INTEGER PRIMARY KEY AUTOINCREMENT,
    timestamp TEXT NOT NULL,
    actor TEXT NOT NULL,
    action TEXT NOT NULL,
    account_id TEXT,
    outcome TEXT NOT NULL,
    reason TEXT,
    details TEXT NOT NULL
);
CREATE INDEX idx_audit_time ON audit(timestamp);
CREATE INDEX idx_audit_action_outcome_time ON audit(action, outcome, timestamp);)"},
    Migration{"policy_rules_v1", R"(
CREATE TABLE policy_rules (
    id TEXT PRIMARY KEY,
    enabled INTEGER NOT NULL,
    account TEXT,
    tool_pattern TEXT NOT NULL,
    match_json TEXT NOT NULL,
    decision TEXT NOT NULL,
    source TEXT NOT NULL,
    created_at TEXT NOT NULL
);
CREATE INDEX idx_rules_enabled ON policy_rules(enabled);)"},
    Migration{"feedback_v1", R"(
CREATE TABLE feedback (
    id TEXT PRIMARY KEY,
    kind TEXT NOT NULL,
    text TEXT NOT NULL,
    automation TEXT,
    channel TEXT,
    handle TEXT,
    answer TEXT,
    created_at TEXT NOT NULL,
    answered_at TEXT,
    injected_at TEXT,
    expires_at TEXT,
    source TEXT NOT NULL
);)"},
    Migration{"feedback_v2_pending", "ALTER TABLE feedback ADD COLUMN pending_id TEXT;"},
};

/// SQLite takes a file of no bytes for a new database, and gives its journal the mode of the file.
std::filesystem::path madePrivate(std::filesystem::path file)
{
    if (const std::error_code error = platform::makeFilePrivate(file))
        throw std::filesystem::filesystem_error("The database cannot be opened", file, error);
    return file;
}

std::filesystem::path fileInHome()
{
    ConfigDir::ensureExists();
    return madePrivate(ConfigDir::databaseURL());
}

std::filesystem::path fileIn(const std::filesystem::path& directory)
{
    std::filesystem::create_directories(directory);
    return madePrivate(directory / "mervo.sqlite");
}

/// One cheap question, which is all that opening a file in use costs.
bool isUpToDate(Database& database)
{
    try {
        auto query = database.prepare("SELECT COUNT(*) FROM grdb_migrations WHERE identifier IN (?, ?, ?, ?)");
        for (const Migration& migration : kMigrations)
            query.bind(migration.identifier);
        return query.step() && query.integer(0) == static_cast<std::int64_t>(kMigrations.size());
    } catch (const sqlite::Error& error) {
        if (error.isMisfit()) // there is no such table yet
            return false;
        throw;
    }
}

bool isApplied(Database& database, const Migration& migration)
{
    auto query = database.prepare("SELECT 1 FROM grdb_migrations WHERE identifier = ?");
    return query.bind(migration.identifier).step();
}

/// Asks inside its transaction whether another process was faster.
void apply(Database& database, const Migration& migration)
{
    if (isApplied(database, migration))
        return;
    database.execute(migration.statements);
    database.prepare("INSERT INTO grdb_migrations (identifier) VALUES (?)").bind(migration.identifier).run();
}

/// A connection and the file that it was opened on.
struct Connected {
    std::filesystem::path path;
    std::optional<platform::FileStamp> file;
    std::shared_ptr<MervoDB> db;

    bool isOn(const std::filesystem::path& wanted) const
    {
        if (db == nullptr || path != wanted)
            return false;
        const auto now = platform::fileStamp(wanted);
        return file && now && now->isSameFile(*file);
    }
};

Connected connect(const std::filesystem::path& path)
{
    auto db = std::make_shared<MervoDB>();
    return {path, platform::fileStamp(path), std::move(db)};
}

} // namespace

MervoDB::MervoDB()
    : MervoDB(fileInHome(), Database::Access::readWrite, Database::kUsualWait)
{
}

MervoDB::MervoDB(const std::filesystem::path& directory, std::chrono::milliseconds longestWait)
    : MervoDB(fileIn(directory), Database::Access::readWrite, longestWait)
{
}

MervoDB::MervoDB(const std::filesystem::path& file, Database::Access access, std::chrono::milliseconds longestWait)
    : database_(file, access, longestWait)
{
    if (access == Database::Access::readWrite)
        migrate(database_);
}

std::shared_ptr<MervoDB> MervoDB::inMemory()
{
    return std::shared_ptr<MervoDB>(new MervoDB(":memory:", Database::Access::readWrite, Database::kUsualWait));
}

std::shared_ptr<MervoDB> MervoDB::existing(std::chrono::milliseconds longestWait)
{
    const std::filesystem::path file = ConfigDir::databaseURL();
    if (!std::filesystem::exists(file))
        return nullptr;
    return std::shared_ptr<MervoDB>(new MervoDB(file, Database::Access::readOnly, longestWait));
}

std::shared_ptr<MervoDB> MervoDB::shared()
{
    // Never destroyed: a thread may still be writing its last row while the process ends.
    static auto& mutex = *new std::mutex;
    static auto& current = *new Connected;
    const std::filesystem::path path = ConfigDir::databaseURL();
    {
        const std::scoped_lock guard(mutex);
        if (current.isOn(path))
            return current.db;
    }
    Connected opened = connect(path);
    const std::scoped_lock guard(mutex);
    if (!current.isOn(path)) // else another thread was faster
        current = std::move(opened);
    return current.db;
}

void MervoDB::migrate(Database& database)
{
    database.read([](Database& open) {
        if (isUpToDate(open))
            return;
        open.execute("CREATE TABLE IF NOT EXISTS grdb_migrations (identifier TEXT NOT NULL PRIMARY KEY)");
        for (const Migration& migration : kMigrations)
            open.write([&](Database& inside) { apply(inside, migration); });
    });
}

} // namespace mervo
