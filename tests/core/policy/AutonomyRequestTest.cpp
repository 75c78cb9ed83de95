#include "core/policy/AutonomyRequest.h"

#include "core/foundation/ServiceError.h"
#include "tests/support/Files.h"

#include <barrier>
#include <gtest/gtest.h>
#include <stdlib.h>
#include <thread>

namespace mervo {
namespace {

using Change = HarnessConfig::AutonomyChange;

class Request : public testing::Test {
protected:
    Request() { ::setenv("MERVO_HOME", (dir / "home").c_str(), 1); }
    test::TempDir dir;
    std::filesystem::path file = dir / "home/config.json";
    AuditLog audit{MervoDB::inMemory()};
};

TEST_F(Request, onlyLoweringChangesAnything)
{
    for (const AutonomyMode current : kAllAutonomyModes) {
        for (const AutonomyMode wanted : kAllAutonomyModes) {
            HarnessConfig config;
            config.autonomyMode = current;
            config.notifyEmail = "me@x.org";
            config.imapAccounts = {{"G", "a@b", "h", 993}};
            const std::string before = config.encode() + "\n";
            test::writeFile(file, before);
            const auto rows = audit.count();
            const Change change = AutonomyRequest::make(wanted, "mcp:x", audit);
            EXPECT_EQ(change, wanted > current ? Change::refusedHumanOnly : Change::applied);
            if (wanted >= current) {
                EXPECT_EQ(test::readFile(file), before) << "not even written again";
                EXPECT_EQ(audit.count(), rows);
                continue;
            }
            config.autonomyMode = wanted;
            EXPECT_EQ(HarnessConfig::load(), config);
            const AuditEntry row = audit.recent(1).at(0);
            EXPECT_EQ(row,
                (AuditEntry{row.timestamp, "mcp:x", "set_autonomy", {}, {{"mode", std::string(rawValue(wanted))}},
                    "executed", "agent_lowered"}));
        }
    }
}

TEST_F(Request, theDefaultIsALevelToo)
{
    EXPECT_EQ(AutonomyRequest::make(AutonomyMode::copilote, "cli", audit), Change::applied);
    EXPECT_EQ(AutonomyRequest::make(AutonomyMode::yolo, "cli", audit), Change::refusedHumanOnly);
    EXPECT_TRUE(test::tree(dir.path()).empty());
    test::writeFile(file, R"({"yoloMode":true})");
    EXPECT_EQ(AutonomyRequest::make(AutonomyMode::yolo, "cli", audit), Change::applied);
    EXPECT_EQ(AutonomyRequest::make(AutonomyMode::panic, "cli", audit), Change::applied);
    EXPECT_EQ(HarnessConfig::load().autonomyMode, AutonomyMode::panic);
}

TEST_F(Request, whatCannotBeWrittenIsToldAndNotRecorded)
{
    test::writeFile(dir / "home", "in the way");
    try {
        (void)AutonomyRequest::make(AutonomyMode::panic, "cli", audit);
        ADD_FAILURE();
    } catch (const ServiceError& error) {
        EXPECT_EQ(error.what(),
            "the autonomy level stays at \"copilote\": the home \"" + (dir / "home").string()
                + "\" cannot be created: File exists");
    }
    EXPECT_EQ(audit.count(), 0);
}

TEST_F(Request, loweringAtOnceWithAnotherNeverEndsAboveTheLower)
{
    if (std::filesystem::is_directory("/dev/shm")) // where writing takes no time, more happens at once
        ::setenv("TMPDIR", "/dev/shm", 1);
    const test::TempDir memory;
    ::unsetenv("TMPDIR");
    ::setenv("MERVO_HOME", memory.path().c_str(), 1);
    int above = 0;
    for (int round = 0; round < 400; ++round) {
        test::writeFile(memory / "config.json", R"({"autonomyMode":"yolo"})");
        std::barrier start(5);
        std::vector<std::thread> threads;
        for (int agent = 0; agent < 4; ++agent) {
            threads.emplace_back([&] {
                AuditLog rows{MervoDB::inMemory()};
                start.arrive_and_wait();
                (void)AutonomyRequest::make(AutonomyMode::copilote, "mcp:x", rows);
            });
        }
        start.arrive_and_wait();
        const auto owner =
            HarnessConfig::update([](HarnessConfig& config) { config.autonomyMode = AutonomyMode::panic; });
        EXPECT_EQ(owner.failure, "");
        for (std::thread& thread : threads)
            thread.join();
        above += HarnessConfig::load().autonomyMode == AutonomyMode::panic ? 0 : 1;
    }
    EXPECT_EQ(above, 0);
}

TEST_F(Request, whatWasKeptOfADamagedFileIsTold)
{
    test::writeFile(file, R"({"autonomyMode":"yolo",})");
    Notices notices;
    EXPECT_EQ(AutonomyRequest::make(AutonomyMode::panic, "cli", audit, &notices), Change::applied);
    ASSERT_EQ(notices.warnings.size(), 1U);
    EXPECT_NE(notices.warnings[0].find("config.json.damaged"), std::string::npos);
}

} // namespace
} // namespace mervo
