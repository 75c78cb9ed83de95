#include "core/foundation/HarnessConfig.h"
#include "tests/frontends/cli/Cli.h"

namespace mervo::test {

using testing::HasSubstr;

using AutonomyTest = Cli;

TEST_F(AutonomyTest, canBeLoweredAndNeverRaised)
{
    for (const AutonomyMode from : kAllAutonomyModes) {
        for (const AutonomyMode to : kAllAutonomyModes) {
            SCOPED_TRACE(std::string(rawValue(from)) + " to " + std::string(rawValue(to)));
            std::filesystem::remove_all(home());
            setMode(rawValue(from));
            const std::string bytes = readFile(home() / "config.json");
            const Ended run = mervo({"autonomy", std::string(rawValue(to))});
            const AutonomyMode expected = to < from ? to : from;
            EXPECT_EQ(run.status, to > from ? 1 : 0);
            EXPECT_EQ(run.out, to > from ? "" : std::string(rawValue(expected)) + "\n");
            EXPECT_EQ(mervo({"autonomy"}).out, std::string(rawValue(expected)) + "\n");
            EXPECT_THAT(run.err, to > from ? HasSubstr("only a person can raise autonomy") : HasSubstr(""));
            EXPECT_EQ(readFile(home() / "config.json") == bytes, to >= from);
            const auto rows = audit();
            ASSERT_EQ(rows.size(), to < from ? 1U : 0U);
            if (to < from) {
                EXPECT_EQ(rows[0],
                    (AuditEntry{rows[0].timestamp, "cli", "set_autonomy", {}, {{"mode", std::string(rawValue(to))}},
                        "executed", "agent_lowered"}));
            }
        }
    }
}

TEST_F(AutonomyTest, theDefaultAndTheOlderKeyAreLevelsToo)
{
    EXPECT_EQ(mervo({"autonomy", "copilote"}).status, 0);
    EXPECT_EQ(mervo({"autonomy", "yolo"}).status, 1);
    EXPECT_FALSE(std::filesystem::exists(home()));
    writeFile(home() / "config.json", R"({"yoloMode":true})");
    EXPECT_EQ(mervo({"autonomy", "yolo"}).status, 0);
    EXPECT_EQ(mervo({"autonomy", "panic"}).out, "panic\n");
}

TEST_F(AutonomyTest, otherWordsAreWrongUsage)
{
    for (const std::string word : {"turbo", "PANIC", "", "panic "})
        EXPECT_EQ(mervo({"autonomy", word}).status, 2) << word;
    EXPECT_EQ(mervo({"autonomy", "panic", "yolo"}).status, 2);
    EXPECT_FALSE(std::filesystem::exists(home()));
}

TEST_F(AutonomyTest, aDamagedFileIsKeptAndNamed)
{
    writeFile(home() / "config.json", R"({"autonomyMode":"panic",})");
    EXPECT_THAT(mervo({"autonomy"}).err, HasSubstr("is no JSON object; every setting counts as its default"));
    const Ended run = mervo({"autonomy", "panic"});
    EXPECT_EQ(run.out, "panic\n");
    EXPECT_THAT(run.err, HasSubstr("warning: "));
    EXPECT_THAT(run.err, HasSubstr("config.json.damaged"));
    EXPECT_EQ(mervo({"autonomy"}).err, "");
    EXPECT_THAT(mervo({"doctor"}).out, HasSubstr("config.json.damaged"));
}

TEST_F(AutonomyTest, aLevelThatCouldNotBeWrittenIsNotReportedAsSet)
{
    writeFile(folder() / "home", "a file where the folder should be");
    const Ended run = mervo({"autonomy", "panic"});
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.err,
        "error: the autonomy level stays at \"copilote\": the home \"" + home().string()
            + "\" cannot be created: File exists\n");
}

} // namespace mervo::test
