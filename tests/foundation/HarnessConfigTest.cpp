#include "core/foundation/HarnessConfig.h"

#include "tests/support/Files.h"

#include <gtest/gtest.h>
#include <stdlib.h>

namespace mervo {
namespace {

namespace fs = std::filesystem;

struct Case {
    const char* json;
    void (*change)(HarnessConfig&); ///< what differs from the defaults
};

constexpr auto kNothing = [](HarnessConfig&) {};

const Case kCases[]{
    {"", kNothing},
    {"{}", kNothing},
    {"[]", kNothing},
    {"null", kNothing},
    {"{\"autonomyMode\":\"yolo\"", kNothing}, // cut off
    {"{\"autonomyMode\":\"yolo\"} x", kNothing},
    {R"({"autonomyMode":"panic"})", [](HarnessConfig& c) { c.autonomyMode = AutonomyMode::panic; }},
    {R"({"autonomyMode":"yolo"})", [](HarnessConfig& c) { c.autonomyMode = AutonomyMode::yolo; }},
    {R"({"autonomyMode":"YOLO"})", kNothing},
    {R"({"autonomyMode":2})", kNothing},
    {R"({"yoloMode":true})", [](HarnessConfig& c) { c.autonomyMode = AutonomyMode::yolo; }},
    {R"({"yoloMode":false})", kNothing},
    {R"({"yoloMode":1})", kNothing},
    {R"({"yoloMode":"true"})", kNothing},
    {R"({"autonomyMode":"turbo","yoloMode":true})", [](HarnessConfig& c) { c.autonomyMode = AutonomyMode::yolo; }},
    {R"({"autonomyMode":"panic","yoloMode":true})", [](HarnessConfig& c) { c.autonomyMode = AutonomyMode::panic; }},
    {R"({"dailyMutationCap":7})", [](HarnessConfig& c) { c.dailyMutationCap = 7; }},
    {R"({"dailyMutationCap":0})", [](HarnessConfig& c) { c.dailyMutationCap = 0; }},
    {R"({"dailyMutationCap":-3})", [](HarnessConfig& c) { c.dailyMutationCap = -3; }},
    {R"({"dailyMutationCap":20.0})", [](HarnessConfig& c) { c.dailyMutationCap = 20; }},
    {R"({"dailyMutationCap":20.5})", kNothing},
    {R"({"dailyMutationCap":"7"})", kNothing},
    {R"({"dailyMutationCap":true})", kNothing},
    {R"({"dailyMutationCap":null})", kNothing},
    {R"({"dailyMutationCap":9223372036854775807})", [](HarnessConfig& c) { c.dailyMutationCap = INT64_MAX; }},
    {R"({"dailyMutationCap":9223372036854775808})", kNothing},
    {R"({"dailyMutationCap":1e300})", kNothing},
    {R"({"dailyMutationCap":-9223372036854775808})", [](HarnessConfig& c) { c.dailyMutationCap = INT64_MIN; }},
    {R"({"notifyEmail":"me@x.org","askChannel":5,"askCleanup":"delete","terminalApp":"xterm","rondelHome":null})",
        [](HarnessConfig& c) {
            c.notifyEmail = "me@x.org";
            c.askCleanup = "delete";
            c.terminalApp = "xterm";
        }},
    {R"({"notifyIMessageHandle":["x"],"rondelHome":"","unknown":{"deep":[1]}})",
        [](HarnessConfig& c) { c.rondelHome = ""; }},
    {R"({"imapAccounts":[{"mailAccountName":"G","email":"a@b","host":"h","port":993,"more":1}]})",
        [](HarnessConfig& c) {
            c.imapAccounts = {{"G", "a@b", "h", 993}};
        }},
    {R"({"imapAccounts":[{"mailAccountName":"G","email":"a@b","host":"h","port":1},{"mailAccountName":"H",
            "email":"c@d","host":"h"}],"dailyMutationCap":5})",
        [](HarnessConfig& c) { c.dailyMutationCap = 5; }},
    {R"({"imapAccounts":[{"mailAccountName":"G","email":"a@b","host":"h","port":"993"}]})", kNothing},
    {R"({"imapAccounts":[null]})", kNothing},
    {R"({"imapAccounts":{"0":1}})", kNothing},
};

TEST(HarnessConfig, decodesKeyByKey)
{
    for (const auto& [json, change] : kCases) {
        HarnessConfig expected;
        change(expected);
        EXPECT_EQ(HarnessConfig::decode(json), expected) << json;
        EXPECT_EQ(HarnessConfig::decode(expected.encode()), expected) << json;
    }
}

TEST(HarnessConfig, encodesInOrderWithoutAbsentOptionals)
{
    EXPECT_EQ(HarnessConfig{}.encode(),
        R"({"autonomyMode":"copilote","imapAccounts":[],"dailyMutationCap":100,"notifyEmail":"",)"
        R"("askChannel":"mail","askCleanup":"archive"})");
    const HarnessConfig full{
        AutonomyMode::panic, {{"G", "a@b", "h", 993}}, -1, "/r", "xterm", "é\n", "+33", "mail", ""};
    EXPECT_EQ(full.encode(),
        R"({"autonomyMode":"panic","imapAccounts":[{"mailAccountName":"G","email":"a@b","host":"h","port":993}],)"
        R"("dailyMutationCap":-1,"rondelHome":"/r","terminalApp":"xterm","notifyEmail":"é\n",)"
        R"("notifyIMessageHandle":"+33","askChannel":"mail","askCleanup":""})");
    HarnessConfig broken;
    broken.notifyEmail = "a\xFF";
    EXPECT_EQ(HarnessConfig::decode(broken.encode()).notifyEmail, "a\xEF\xBF\xBD") << "one bad byte stops nothing";
}

TEST(HarnessConfig, hostileDepthIsHarmless)
{
    const std::string deep(3'000'000, '[');
    EXPECT_EQ(HarnessConfig::decode(deep), HarnessConfig{});
    EXPECT_EQ(
        HarnessConfig::decode("{\"imapAccounts\":" + deep + std::string(deep.size(), ']') + "}"), HarnessConfig{});
    std::string objects;
    for (int depth = 0; depth < 300'000; ++depth)
        objects += "{\"a\":";
    EXPECT_EQ(HarnessConfig::decode(objects + "1" + std::string(300'000, '}')), HarnessConfig{});
}

class ConfigFile : public testing::Test {
protected:
    ConfigFile() { ::setenv("MERVO_HOME", (dir / "home").c_str(), 1); }
    test::TempDir dir;
    fs::path file = dir / "home/config.json";
};

TEST_F(ConfigFile, readingNeverWrites)
{
    EXPECT_EQ(HarnessConfig::load(), HarnessConfig{});
    EXPECT_TRUE(test::tree(dir.path()).empty());
    test::writeFile(file, "{\"yoloMode\":true, \"mine\": 1}");
    const auto before = fs::last_write_time(file);
    EXPECT_EQ(HarnessConfig::load().autonomyMode, AutonomyMode::yolo);
    EXPECT_EQ(fs::last_write_time(file), before);
    EXPECT_EQ(test::readFile(file), "{\"yoloMode\":true, \"mine\": 1}");
}

TEST_F(ConfigFile, savingReplacesTheOlderKey)
{
    test::writeFile(file, R"({"yoloMode":true})");
    ASSERT_TRUE(HarnessConfig::load().save());
    HarnessConfig expected;
    expected.autonomyMode = AutonomyMode::yolo;
    EXPECT_EQ(test::readFile(file), expected.encode());
    EXPECT_EQ(fs::status(file).permissions(), fs::perms(0600));
    EXPECT_EQ(fs::status(dir / "home").permissions(), fs::perms::owner_all);
    EXPECT_EQ(test::tree(dir / "home"), std::set<std::string>{"config.json"});
}

TEST_F(ConfigFile, whatCannotBeSavedIsToldAndLeavesTheOld)
{
    fs::create_directories(file / "in the way");
    EXPECT_FALSE(HarnessConfig{}.save());
    EXPECT_EQ(test::tree(dir / "home"), (std::set<std::string>{"config.json", "config.json/in the way"}));
    test::writeFile(dir / "plain", "");
    ::setenv("MERVO_HOME", (dir / "plain").c_str(), 1);
    EXPECT_FALSE(HarnessConfig{}.save());
}

} // namespace
} // namespace mervo
