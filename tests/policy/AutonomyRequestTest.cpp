#include "core/policy/AutonomyRequest.h"

#include "core/foundation/ServiceError.h"
#include "tests/support/Files.h"

#include <gtest/gtest.h>
#include <stdlib.h>

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
            "The autonomy level could not be written to \"" + file.string() + "\"; it stays at \"copilote\".");
    }
    EXPECT_EQ(audit.count(), 0);
}

} // namespace
} // namespace mervo
