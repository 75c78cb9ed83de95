#include "core/foundation/StoreBoundary.h"

#include "tests/support/Files.h"

#include <gtest/gtest.h>

namespace mervo {
namespace {

using Sentences = std::vector<std::string>;

/// Each on a real database at `home/mervo.sqlite`.
struct Case {
    const char* name;
    void (*harm)(const std::filesystem::path& home);
    const char* statement; ///< what the store then does
    const char* reason; ///< and what the person hears, "@" for the file
};

const Case kCases[] = {
    {"no database at all",
        [](const std::filesystem::path& home) {
            std::filesystem::remove_all(home);
            test::writeFile(home, "");
        },
        "SELECT 1",
        "\"~\" cannot be created or used (File exists); make it and the folder above it yours and writable"},
    {"a folder in its place",
        [](const std::filesystem::path& home) {
            std::filesystem::remove(home / "mervo.sqlite");
            std::filesystem::create_directory(home / "mervo.sqlite");
        },
        "SELECT 1", "@ cannot be opened (Is a directory); make the file and its folder yours, readable and writable"},
    {"damaged from the first byte",
        [](const std::filesystem::path& home) { test::writeFile(home / "mervo.sqlite", std::string(9000, 'x')); },
        "SELECT 1", "@ is damaged; \"mervo doctor\" says what to do"},
    {"a table is missing",
        [](const std::filesystem::path& home) { Database(home / "mervo.sqlite").execute("DROP TABLE audit"); },
        "SELECT * FROM audit",
        "@ is not as this program expects it (no such table: audit); \"mervo doctor\" says what to do"},
    {"the disk is full", [](const std::filesystem::path&) {},
        "PRAGMA max_page_count = 1; CREATE TABLE x (y); INSERT INTO x VALUES (zeroblob(100000))",
        "the disk of @ is full; free some space"},
    {"read only", [](const std::filesystem::path&) {},
        "PRAGMA query_only = ON; INSERT INTO grdb_migrations VALUES ('x')",
        "@ cannot be written; make the file and its folder yours and writable"},
};

TEST(StoreFailures, aPersonHearsTheReasonAndTheRemedy)
{
    for (const Case& c : kCases) {
        const test::TempDir dir;
        const std::filesystem::path home = dir / "home";
        ::setenv("MERVO_HOME", home.c_str(), 1);
        {
            MervoDB made;
        }
        c.harm(home);
        const StoreFailures::Scope failures;
        EXPECT_EQ(
            orElse("it failed", StoreDatabase::ofHome(), 7, [&](Database& db) { return db.execute(c.statement), 1; }),
            7);
        std::string expected = c.reason;
        if (const auto at = expected.find('@'); at != std::string::npos)
            expected.replace(at, 1, '"' + (home / "mervo.sqlite").string() + '"');
        if (const auto at = expected.find('~'); at != std::string::npos)
            expected.replace(at, 1, home.string());
        EXPECT_EQ(failures.sentences(), Sentences{"it failed: " + expected}) << c.name;
    }
}

TEST(StoreFailures, aLockIsNamedWithTheWait)
{
    const test::TempDir dir;
    const auto db = std::make_shared<MervoDB>(dir.path(), std::chrono::milliseconds(30));
    Database other(dir / "mervo.sqlite");
    other.execute("BEGIN IMMEDIATE");
    const StoreFailures::Scope failures;
    orElse("x", StoreDatabase(db), 0, [](Database& open) { return open.write([](Database&) { return 1; }); });
    EXPECT_EQ(failures.first(),
        "x: another program holds \"" + (dir / "mervo.sqlite").string()
            + "\" locked and did not let go of it within 30 ms; try again, or end that program");
}

TEST(StoreFailures, everyScopeOfTheThreadHearsEachSentenceOnce)
{
    const auto fail = [](const char* what) { orElse(what, StoreDatabase(nullptr), 0, [](Database&) { return 1; }); };
    const StoreFailures::Scope outer;
    fail("a");
    {
        const StoreFailures::Scope inner;
        fail("b");
        fail("b");
        EXPECT_EQ(inner.sentences(), Sentences{"b: there is no database"});
    }
    fail("a");
    EXPECT_EQ(outer.sentences(), (Sentences{"a: there is no database", "b: there is no database"}));
}

} // namespace
} // namespace mervo
