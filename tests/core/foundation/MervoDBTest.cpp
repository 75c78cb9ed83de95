#include "core/foundation/MervoDB.h"

#include "tests/support/Files.h"

#include <functional>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <thread>

namespace mervo {
namespace {

using Texts = std::vector<std::string>;

Texts column(Database& database, const std::string& sql, std::string_view name)
{
    return database.read([&](Database& connection) {
        Texts texts;
        auto query = connection.prepare(sql);
        while (query.step())
            texts.push_back(query.text(name));
        return texts;
    });
}

const Texts kIdentifiers{"audit_v1", "policy_rules_v1", "feedback_v1", "feedback_v2_pending"};

Texts identifiers(Database& database)
{
    return column(database, "SELECT identifier FROM grdb_migrations ORDER BY rowid", "identifier");
}

std::int64_t number(Database& database, const std::string& sql)
{
    return database.read([&](Database& connection) {
        auto query = connection.prepare(sql);
        return query.step() ? query.integer(0) : -1;
    });
}

TEST(MervoDB, aNewFileGetsTheWholeSchema)
{
    const auto db = MervoDB::inMemory();
    Database& database = db->database();
    EXPECT_EQ(identifiers(database), kIdentifiers);
    const auto columnsOf = [&](const std::string& table) {
        return column(database,
            "SELECT name || ' ' || type || ' ' || \"notnull\" || pk AS c FROM pragma_table_info('" + table + "')", "c");
    };
    EXPECT_EQ(columnsOf("audit"),
        (Texts{"id INTEGER 01", "timestamp TEXT 10", "actor TEXT 10", "action TEXT 10", "account_id TEXT 00",
            "outcome TEXT 10", "reason TEXT 00", "details TEXT 10"}));
    EXPECT_EQ(columnsOf("policy_rules"),
        (Texts{"id TEXT 01", "enabled INTEGER 10", "account TEXT 00", "tool_pattern TEXT 10", "match_json TEXT 10",
            "decision TEXT 10", "source TEXT 10", "created_at TEXT 10"}));
    EXPECT_EQ(columnsOf("feedback"),
        (Texts{"id TEXT 01", "kind TEXT 10", "text TEXT 10", "automation TEXT 00", "channel TEXT 00", "handle TEXT 00",
            "answer TEXT 00", "created_at TEXT 10", "answered_at TEXT 00", "injected_at TEXT 00", "expires_at TEXT 00",
            "source TEXT 10", "pending_id TEXT 00"}));
    EXPECT_EQ(columnsOf("grdb_migrations"), Texts{"identifier TEXT 11"});
    EXPECT_EQ(column(database,
                  "SELECT name || '(' || (SELECT group_concat(name) FROM pragma_index_info(m.name)) || ')' AS c "
                  "FROM sqlite_master m WHERE type = 'index' AND sql NOT NULL ORDER BY name",
                  "c"),
        (Texts{"idx_audit_action_outcome_time(action,outcome,timestamp)", "idx_audit_time(timestamp)",
            "idx_rules_enabled(enabled)"}));
    EXPECT_EQ(number(database, "SELECT sql LIKE '%AUTOINCREMENT%' FROM sqlite_master WHERE name = 'audit'"), 1);
    EXPECT_EQ(number(database, "PRAGMA foreign_keys"), 1);
    EXPECT_EQ(column(database, "PRAGMA journal_mode", "journal_mode"), Texts{"memory"});
}

TEST(MervoDB, aSecondOpenChangesNoByte)
{
    const test::TempDir dir;
    MervoDB(dir / "new/folder"); // closed again at once
    const std::string before = test::readFile(dir / "new/folder/mervo.sqlite");
    MervoDB db(dir / "new/folder");
    EXPECT_EQ(test::readFile(dir / "new/folder/mervo.sqlite"), before);
    EXPECT_EQ(column(db.database(), "PRAGMA journal_mode", "journal_mode"), Texts{"delete"});
    EXPECT_EQ(test::tree(dir / "new/folder"), std::set<std::string>{"mervo.sqlite"});
}

TEST(MervoDB, anOlderFileIsBroughtUpWithItsRows)
{
    const test::TempDir dir;
    {
        Database old(dir / "mervo.sqlite");
        old.execute(
            "CREATE TABLE grdb_migrations (identifier TEXT NOT NULL PRIMARY KEY);"
            "INSERT INTO grdb_migrations VALUES ('audit_v1');"
            "CREATE TABLE audit (id INTEGER PRIMARY KEY AUTOINCREMENT, timestamp TEXT NOT NULL, actor TEXT NOT NULL,"
            "action TEXT NOT NULL, account_id TEXT, outcome TEXT NOT NULL, reason TEXT, details TEXT NOT NULL);"
            "INSERT INTO audit VALUES (41, '2026-01-01T00:00:00Z', 'a', 'b', NULL, 'sent', NULL, '{}');");
    }
    MervoDB db(dir.path());
    EXPECT_EQ(identifiers(db.database()), kIdentifiers);
    EXPECT_EQ(number(db.database(), "SELECT id FROM audit WHERE outcome = 'sent'"), 41);
    EXPECT_EQ(number(db.database(), "SELECT COUNT(pending_id) FROM feedback"), 0);
}

TEST(MervoDB, aFailedMigrationRollsBackStopsAndIsTold)
{
    const test::TempDir dir;
    Database(dir / "mervo.sqlite")
        .execute("CREATE TABLE idx_rules_enabled (x); CREATE TABLE later (x)"); // in the way of an index
    EXPECT_THROW(MervoDB{dir.path()}, sqlite::Error);
    Database left(dir / "mervo.sqlite");
    EXPECT_EQ(identifiers(left), Texts{"audit_v1"});
    EXPECT_EQ(number(left, "SELECT COUNT(*) FROM sqlite_master WHERE name IN ('policy_rules', 'feedback')"), 0);
}

TEST(MervoDB, existingOnlyReads)
{
    const test::TempDir dir;
    ::setenv("MERVO_HOME", (dir / "home").c_str(), 1);
    EXPECT_EQ(MervoDB::existing(), nullptr);
    EXPECT_TRUE(test::tree(dir.path()).empty());
    MervoDB();
    const auto db = MervoDB::existing();
    ASSERT_NE(db, nullptr);
    EXPECT_EQ(identifiers(db->database()), kIdentifiers);
    EXPECT_THROW(db->database().execute("DELETE FROM grdb_migrations"), sqlite::Error);
}

std::filesystem::perms modeOf(const std::filesystem::path& file)
{
    return std::filesystem::status(file).permissions();
}

TEST(MervoDB, theFileAndItsJournalAreTheOwnersAlone)
{
    using std::filesystem::perms;
    const test::TempDir dir;
    const auto file = dir / "mervo.sqlite";
    const mode_t before = ::umask(0);
    {
        MervoDB db(dir.path());
        EXPECT_EQ(modeOf(file), perms::owner_read | perms::owner_write);
    }
    std::filesystem::permissions(file, perms(0644)); // as earlier versions made it
    MervoDB db(dir.path());
    EXPECT_EQ(modeOf(file), perms::owner_read | perms::owner_write);
    db.database().write([&](Database& open) {
        open.execute("INSERT INTO grdb_migrations VALUES ('x')");
        EXPECT_EQ(modeOf(dir / "mervo.sqlite-journal"), perms::owner_read | perms::owner_write);
    });
    ::umask(before);
}

TEST(MervoDB, theSharedOneIsOpenedAgainUntilThatSucceedsAndThenKept)
{
    const test::TempDir dir;
    const auto home = dir / "home";
    test::writeFile(home, "in the way of the folder");
    ::setenv("MERVO_HOME", home.c_str(), 1);
    EXPECT_THROW(MervoDB::shared(), std::filesystem::filesystem_error);
    std::filesystem::remove(home);
    const std::string text(5000, 'x'); // is no database
    test::writeFile(home / "mervo.sqlite", text);
    EXPECT_THROW(MervoDB::shared(), sqlite::Error);
    EXPECT_EQ(test::readFile(home / "mervo.sqlite"), text);
    std::filesystem::remove(home / "mervo.sqlite");
    const auto open = MervoDB::shared();
    EXPECT_EQ(MervoDB::shared(), open);
}

TEST(MervoDB, noRowGoesIntoAFileWithoutAName)
{
    const test::TempDir dir;
    ::setenv("MERVO_HOME", (dir / "home").c_str(), 1);
    const auto file = dir / "home/mervo.sqlite";
    const auto add = [] { MervoDB::shared()->database().execute("INSERT INTO grdb_migrations VALUES ('x')"); };
    const auto rows = [&] {
        Database named(file);
        return number(named, "SELECT COUNT(*) FROM grdb_migrations WHERE identifier = 'x'");
    };
    add();
    std::filesystem::remove(file);
    add();
    EXPECT_EQ(rows(), 1) << "deleted under a living process";
    MervoDB(dir / "other");
    std::filesystem::rename(dir / "other/mervo.sqlite", file);
    EXPECT_EQ(rows(), 0);
    add();
    EXPECT_EQ(rows(), 1) << "another in its place";
}

TEST(Database, aThrowingClosureChangesNothing)
{
    const auto db = MervoDB::inMemory();
    Database& database = db->database();
    const auto half = [](Database& connection) {
        connection.execute("INSERT INTO grdb_migrations VALUES ('x')");
        throw std::runtime_error("half way");
    };
    EXPECT_THROW(database.write(half), std::runtime_error);
    EXPECT_EQ(identifiers(database), kIdentifiers);
    database.write([](Database& connection) { connection.execute("INSERT INTO grdb_migrations VALUES ('y')"); });
    EXPECT_EQ(identifiers(database).size(), 5U);
}

void onEightThreads(const std::function<void(int thread)>& work)
{
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 8; ++thread)
        threads.emplace_back(work, thread);
    for (std::thread& thread : threads)
        thread.join();
}

TEST(Database, threadsThatQueueForItWaitSideBySide)
{
    constexpr std::chrono::milliseconds wait(200);
    const test::TempDir dir;
    Database other(dir / "x.sqlite"), database(dir / "x.sqlite", Database::Access::readWrite, wait);
    other.execute("BEGIN EXCLUSIVE");
    const auto before = std::chrono::steady_clock::now();
    onEightThreads([&](int) { EXPECT_THROW(database.write([](Database&) {}), sqlite::Error); });
    EXPECT_LT(std::chrono::steady_clock::now() - before, wait * 4);
}

TEST(Database, threadsTakeTurns)
{
    const auto db = MervoDB::inMemory();
    onEightThreads([&](int thread) {
        for (int row = 0; row < 100; ++row) {
            db->database().write([&](Database& open) {
                open.prepare("INSERT INTO grdb_migrations VALUES (?)").bind(std::to_string(thread * 1000 + row)).run();
            });
        }
    });
    EXPECT_EQ(number(db->database(), "SELECT COUNT(*) FROM grdb_migrations"), 804);
}

} // namespace
} // namespace mervo
