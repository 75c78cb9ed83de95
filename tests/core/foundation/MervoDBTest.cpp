#include "core/foundation/MervoDB.h"

#include "tests/support/Files.h"

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
        return query.step() ? query.firstInteger() : -1;
    });
}

TEST(MervoDB, aNewFileGetsTheWholeSchema)
{
    const auto db = MervoDB::inMemory();
    Database& database = db->database();
    EXPECT_EQ(identifiers(database), kIdentifiers);
    EXPECT_EQ(column(database,
                  "SELECT name || ' ' || type || ' ' || \"notnull\" || pk AS c FROM pragma_table_info('audit')", "c"),
        (Texts{"id INTEGER 01", "timestamp TEXT 10", "actor TEXT 10", "action TEXT 10", "account_id TEXT 00",
            "outcome TEXT 10", "reason TEXT 00", "details TEXT 10"}));
    EXPECT_EQ(
        column(database,
            "SELECT name || ' ' || type || ' ' || \"notnull\" || pk AS c FROM pragma_table_info('policy_rules')", "c"),
        (Texts{"id TEXT 01", "enabled INTEGER 10", "account TEXT 00", "tool_pattern TEXT 10", "match_json TEXT 10",
            "decision TEXT 10", "source TEXT 10", "created_at TEXT 10"}));
    EXPECT_EQ(column(database, "SELECT name || ' ' || \"notnull\" || pk AS c FROM pragma_table_info('feedback')", "c"),
        (Texts{"id 01", "kind 10", "text 10", "automation 00", "channel 00", "handle 00", "answer 00", "created_at 10",
            "answered_at 00", "injected_at 00", "expires_at 00", "source 10", "pending_id 00"}));
    EXPECT_EQ(
        column(database,
            "SELECT name || ' ' || type || ' ' || \"notnull\" || pk AS c FROM pragma_table_info('grdb_migrations')",
            "c"),
        Texts{"identifier TEXT 11"});
    EXPECT_EQ(column(database,
                  "SELECT name || '(' || (SELECT group_concat(name) FROM pragma_index_info(m.name)) || ')' AS c "
                  "FROM sqlite_master m WHERE type = 'index' AND sql NOT NULL ORDER BY name",
                  "c"),
        (Texts{"idx_audit_action_outcome_time(action,outcome,timestamp)", "idx_audit_time(timestamp)",
            "idx_rules_enabled(enabled)"}));
    EXPECT_EQ(number(database, "SELECT sql LIKE '%AUTOINCREMENT%' FROM sqlite_master WHERE name = 'audit'"), 1);
    EXPECT_EQ(number(database, "PRAGMA foreign_keys"), 1);
    EXPECT_EQ(column(database, "PRAGMA journal_mode", "journal_mode"), Texts{"memory"});
    EXPECT_EQ(number(MervoDB::inMemory()->database(), "SELECT COUNT(*) FROM audit"), 0);
}

TEST(MervoDB, aSecondOpenChangesNoByte)
{
    const test::TempDir dir;
    {
        MervoDB db(dir / "new/folder");
    }
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
    {
        Database old(dir / "mervo.sqlite");
        old.execute("CREATE TABLE idx_rules_enabled (x); CREATE TABLE later (x)"); // in the way of an index
    }
    EXPECT_THROW(MervoDB{dir.path()}, DatabaseError);
    Database left(dir / "mervo.sqlite");
    EXPECT_EQ(identifiers(left), Texts{"audit_v1"});
    EXPECT_EQ(number(left, "SELECT COUNT(*) FROM sqlite_master WHERE name IN ('policy_rules', 'feedback')"), 0);
}

TEST(MervoDB, whatIsNoDatabaseIsRefused)
{
    const test::TempDir dir;
    const std::string text(5000, 'x');
    test::writeFile(dir / "mervo.sqlite", text);
    EXPECT_THROW(MervoDB{dir.path()}, DatabaseError);
    EXPECT_EQ(test::readFile(dir / "mervo.sqlite"), text);
    EXPECT_THROW(MervoDB{dir / "mervo.sqlite"}, std::filesystem::filesystem_error);
}

TEST(MervoDB, existingOnlyReads)
{
    const test::TempDir dir;
    ::setenv("MERVO_HOME", (dir / "home").c_str(), 1);
    EXPECT_EQ(MervoDB::existing(), nullptr);
    EXPECT_TRUE(test::tree(dir.path()).empty());
    {
        MervoDB db;
    }
    const std::string before = test::readFile(dir / "home/mervo.sqlite");
    const auto db = MervoDB::existing();
    ASSERT_NE(db, nullptr);
    EXPECT_EQ(identifiers(db->database()), kIdentifiers);
    EXPECT_THROW(db->database().execute("DELETE FROM grdb_migrations"), DatabaseError);
    EXPECT_THROW(db->database().execute("CREATE TABLE x (y)"), DatabaseError);
    EXPECT_EQ(test::readFile(dir / "home/mervo.sqlite"), before);
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
    test::writeFile(home / "mervo.sqlite", std::string(5000, 'x'));
    EXPECT_THROW(MervoDB::shared(), DatabaseError);
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
    {
        MervoDB other(dir / "other");
    }
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
    EXPECT_THROW(database.write([](Database& connection) { connection.execute("INSERT INTO nowhere VALUES (1)"); }),
        DatabaseError);
    EXPECT_EQ(identifiers(database), kIdentifiers);
    database.write([](Database& connection) { connection.execute("INSERT INTO grdb_migrations VALUES ('y')"); });
    EXPECT_EQ(identifiers(database).size(), 5U);
}

TEST(Database, columnsAreFoundByNameInAnyOrder)
{
    Database database(":memory:");
    auto query = database.prepare("SELECT 7 AS n, 'text' AS T, NULL AS gone, x'00ff' AS bytes, ? AS bound, ? AS none");
    query.bind("").bind(std::optional<std::string>());
    ASSERT_TRUE(query.step());
    EXPECT_EQ(query.text("t"), "text");
    EXPECT_EQ(query.integer("N"), 7);
    EXPECT_EQ(query.optionalText("gone"), std::nullopt);
    EXPECT_EQ(query.optionalText("bound"), "") << "an empty text is no NULL";
    EXPECT_EQ(query.optionalText("none"), std::nullopt);
    EXPECT_EQ(query.text("bytes"), std::string("\0\xFF", 2));
    EXPECT_EQ(query.optionalText("missing"), std::nullopt);
    EXPECT_EQ(query.integer("missing"), 0);
    EXPECT_FALSE(query.step());
    EXPECT_THROW(database.prepare("SELECT nothing FROM nowhere"), DatabaseError);
}

/// A file that another connection keeps locked, and a connection that waits for it.
struct Locked {
    static constexpr std::chrono::milliseconds kWait{200};

    Locked() { other.execute("BEGIN EXCLUSIVE"); }
    std::chrono::milliseconds failingRead()
    {
        const auto before = std::chrono::steady_clock::now();
        EXPECT_THROW(number(database, "SELECT COUNT(*) FROM sqlite_master"), DatabaseError);
        return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - before);
    }

    test::TempDir dir;
    Database other{dir / "x.sqlite"};
    Database database{dir / "x.sqlite", Database::Access::readWrite, kWait};
};

TEST(Database, waitsOnceWhereOnceIsEnough)
{
    Locked locked;
    {
        const Database::OneWait wait;
        EXPECT_GE(locked.failingRead(), Locked::kWait);
        EXPECT_LT(locked.failingRead(), Locked::kWait / 2);
    }
    EXPECT_GE(locked.failingRead(), Locked::kWait);
}

TEST(Database, threadsThatQueueForItWaitSideBySide)
{
    Locked locked;
    const auto before = std::chrono::steady_clock::now();
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 8; ++thread)
        threads.emplace_back([&] { EXPECT_THROW(locked.database.write([](Database&) {}), DatabaseError); });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_LT(std::chrono::steady_clock::now() - before, Locked::kWait * 4);
}

TEST(Database, threadsTakeTurns)
{
    const auto db = MervoDB::inMemory();
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 8; ++thread) {
        threads.emplace_back([&db, thread] {
            for (int row = 0; row < 100; ++row) {
                db->database().write([&](Database& connection) {
                    connection.prepare("INSERT INTO grdb_migrations VALUES (?)")
                        .bind(std::to_string(thread * 1000 + row))
                        .run();
                });
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(number(db->database(), "SELECT COUNT(*) FROM grdb_migrations"), 804);
}

} // namespace
} // namespace mervo
