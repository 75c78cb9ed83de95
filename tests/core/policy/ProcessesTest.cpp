#include "core/foundation/HarnessConfig.h"
#include "core/foundation/MervoDB.h"
#include "core/policy/AuditLog.h"
#include "core/policy/PendingStore.h"
#include "tests/support/Files.h"
#include "tests/support/Program.h"

#include <gtest/gtest.h>
#include <map>
#include <memory>
#include <stdlib.h>

namespace mervo {
namespace {

constexpr int kProcesses = 8;

class Processes : public testing::Test {
protected:
    Processes() { ::setenv("MERVO_HOME", home.c_str(), 1); }

    std::unique_ptr<test::Program> start(const std::string& deed, int count, const std::string& name)
    {
        return std::make_unique<test::Program>(
            test::bundle() / "Tests/policy-worker", std::vector<std::string>{deed, std::to_string(count), name});
    }
    void runAll(const std::string& deed, int count)
    {
        std::vector<std::unique_ptr<test::Program>> programs;
        for (int i = 0; i < kProcesses; ++i)
            programs.push_back(start(deed, count, "p" + std::to_string(i)));
        for (auto& program : programs) {
            const test::Ended run = program->finish(std::chrono::seconds(120));
            EXPECT_EQ(run.status, 0) << run.err;
        }
    }
    std::map<std::string, int> rowsByActor(MervoDB& db)
    {
        std::map<std::string, int> rows;
        auto query = db.database().prepare("SELECT actor, COUNT(DISTINCT details) AS n FROM audit GROUP BY actor");
        while (query.step())
            rows[query.text("actor")] = static_cast<int>(query.integer("n"));
        return rows;
    }
    std::map<std::string, int> everyone(int count)
    {
        std::map<std::string, int> rows;
        for (int i = 0; i < kProcesses; ++i)
            rows["p" + std::to_string(i)] = count;
        return rows;
    }

    test::TempDir dir;
    std::filesystem::path home = dir / "home";
};

TEST_F(Processes, callsAtOnceLoseNothing)
{
    runAll("gate", 20); // the home and its database do not exist yet: all of them open and migrate at once
    MervoDB db;
    EXPECT_EQ(rowsByActor(db), everyone(20));
    AuditLog audit(std::make_shared<MervoDB>());
    EXPECT_EQ(audit.count(), kProcesses * 20);
    EXPECT_EQ(PendingStore().list().size(), kProcesses * 10U);
    EXPECT_EQ(audit.search("pending_approval", 1000).size(), kProcesses * 10U);
    auto query = db.database().prepare("SELECT COUNT(*) FROM grdb_migrations");
    ASSERT_TRUE(query.step());
    EXPECT_EQ(query.integer(0), 4);
}

TEST_F(Processes, writersWithoutPauseLoseNoRow)
{
    const test::TempDir memory(test::memory()); // the lock is taken again at once: the hardest case for those who wait
    ::setenv("MERVO_HOME", memory.path().c_str(), 1);
    runAll("rows", 500);
    MervoDB db;
    EXPECT_EQ(rowsByActor(db), everyone(500));
}

TEST_F(Processes, aReaderOfTheConfigurationMeetsOnlyWholeOnes)
{
    HarnessConfig first;
    first.notifyEmail = std::string(100'000, 'a');
    ASSERT_TRUE(first.save());
    for (int round = 0; round < 5; ++round) {
        const auto one = start("config", 1'000'000, "a");
        const auto other = start("config", 1'000'000, "b");
        for (int look = 0; look < 50; ++look) {
            const HarnessConfig seen = HarnessConfig::load();
            ASSERT_EQ(seen.notifyEmail, std::string(100'000, seen.notifyEmail.empty() ? 'x' : seen.notifyEmail[0]));
            ::usleep(1000);
        }
    } // both killed in the middle
    EXPECT_EQ(HarnessConfig::load().notifyEmail.size(), 100'000U);
}

TEST_F(Processes, noUpdateOfTheConfigurationUndoesAnother)
{
    runAll("count", 20);
    EXPECT_EQ(HarnessConfig::load().dailyMutationCap, 100 + kProcesses * 20);
}

TEST_F(Processes, oneWhoHoldsTheHomeAndHangsIsNamedAndItsEndFreesIt)
{
    const auto lower = [](HarnessConfig& config) { config.autonomyMode = AutonomyMode::panic; };
    auto holder = start("home", 0, "-");
    ASSERT_EQ(holder->readLine(), "held");
    ASSERT_EQ(::kill(holder->pid(), SIGSTOP), 0);
    const auto update = HarnessConfig::update(lower, std::chrono::seconds(1));
    EXPECT_EQ(update.failure,
        "\"" + (home / ".lock").string() + "\" has been held by process " + std::to_string(holder->pid())
            + " for 1 s; nothing was changed. Try again, or end the process that holds it");
    EXPECT_FALSE(std::filesystem::exists(home / "config.json"));
    holder.reset(); // killed
    EXPECT_EQ(HarnessConfig::update(lower, std::chrono::seconds(1)).failure, "");
}

} // namespace
} // namespace mervo
