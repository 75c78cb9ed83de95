#include "platform/sqlite/Connection.h"
#include "platform/sqlite/Error.h"
#include "platform/sqlite/Statement.h"
#include "tests/support/Files.h"

#include <gtest/gtest.h>

namespace mervo::sqlite {
namespace {

constexpr std::chrono::milliseconds kWait(200);

std::int64_t rows(const Connection& connection)
{
    Statement query(connection, "SELECT count(*) FROM t");
    return query.step() ? query.integer(0) : -1;
}

TEST(Sqlite, columnsAreFoundByNameInAnyOrder)
{
    const Connection memory(":memory:", Access::readWrite, kWait);
    Statement query(memory, "SELECT 7 AS n, 'text' AS T, NULL AS gone, x'00ff' AS bytes, ? AS bound, ? AS none");
    query.bind("").bind(std::optional<std::string>());
    ASSERT_TRUE(query.step());
    const std::pair<const char*, std::optional<std::string>> expected[] = {{"t", "text"}, {"N", "7"}, {"gone", {}},
        {"bound", ""}, {"none", {}}, {"bytes", std::string("\0\xFF", 2)}, {"missing", {}}};
    for (const auto& [name, text] : expected)
        EXPECT_EQ(query.optionalText(name), text) << name;
    EXPECT_EQ(query.integer("N") + query.integer("missing"), 7);
}

TEST(Sqlite, aThreadThatWaitsOnceWaitsOnceInVain)
{
    const test::TempDir dir;
    Connection other(dir / "x", Access::readWrite, kWait), waiting(dir / "x", Access::readWrite, kWait);
    other.execute("CREATE TABLE t (n); BEGIN EXCLUSIVE");
    const auto failingRead = [&] {
        const auto before = std::chrono::steady_clock::now();
        EXPECT_THROW(rows(waiting), Error);
        return std::chrono::steady_clock::now() - before;
    };
    {
        const OneWait wait;
        EXPECT_GE(failingRead(), kWait);
        EXPECT_LT(failingRead(), kWait / 2);
    }
    EXPECT_GE(failingRead(), kWait);
}

TEST(Sqlite, aKilledWriterIsRolledBackOnlyByWhoMayTouchTheFile)
{
    const test::TempDir dir;
    Connection writer(dir / "x", Access::readWrite, kWait);
    writer.execute("PRAGMA cache_size = 1; CREATE TABLE t (n); INSERT INTO t VALUES (1); BEGIN");
    writer.execute("INSERT INTO t SELECT zeroblob(9000) FROM pragma_function_list"); // part of it is in the file
    std::filesystem::copy(dir / "x", dir / "left");
    std::filesystem::copy(dir / "x-journal", dir / "left-journal");
    const std::string left = test::readFile(dir / "left");
    EXPECT_THROW(rows(Connection(dir / "left", Access::readOnlyFile, kWait)), Error);
    EXPECT_EQ(test::readFile(dir / "left"), left);
    Connection reading(dir / "left", Access::readOnly, kWait);
    EXPECT_EQ(rows(reading), 1);
    EXPECT_THROW(reading.execute("CREATE TABLE x (y)"), Error);
}

} // namespace
} // namespace mervo::sqlite
