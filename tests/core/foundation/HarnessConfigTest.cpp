#include "core/foundation/HarnessConfig.h"

#include "tests/support/Files.h"
#include "tests/support/Growth.h"

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

class ConfigFile : public testing::Test {
protected:
    ConfigFile() { ::setenv("MERVO_HOME", (dir / "home").c_str(), 1); }
    test::TempDir dir;
    fs::path file = dir / "home/config.json";
};

TEST_F(ConfigFile, savingReplacesTheOlderKey)
{
    test::writeFile(file, R"({"yoloMode":true})");
    ASSERT_TRUE(HarnessConfig::load().save());
    HarnessConfig expected;
    expected.autonomyMode = AutonomyMode::yolo;
    EXPECT_EQ(test::readFile(file), expected.encode());
    EXPECT_EQ(fs::status(file).permissions(), fs::perms(0600));
    EXPECT_EQ(fs::status(dir / "home").permissions(), fs::perms::owner_all);
    EXPECT_EQ(test::tree(dir / "home"), (std::set<std::string>{".lock", "config.json"}));
}

TEST_F(ConfigFile, whatCannotBeSavedIsToldAndLeavesTheOld)
{
    fs::create_directories(file / "in the way");
    EXPECT_FALSE(HarnessConfig{}.save());
    EXPECT_EQ(test::tree(dir / "home"), (std::set<std::string>{".lock", "config.json", "config.json/in the way"}));
    test::writeFile(dir / "plain", "");
    ::setenv("MERVO_HOME", (dir / "plain").c_str(), 1);
    EXPECT_FALSE(HarnessConfig{}.save());
}

struct Update {
    const char* before;
    void (*change)(HarnessConfig&);
    const char* after;
    bool keepsOld = false; ///< beside, and says so
};

constexpr auto kPanic = [](HarnessConfig& c) { c.autonomyMode = AutonomyMode::panic; };
constexpr auto kAddress = [](HarnessConfig& c) { c.notifyEmail = "me@x.org"; };
constexpr auto kSecondAccount = [](HarnessConfig& c) { c.imapAccounts.push_back({"H", "c@d", "h", 993}); };

const Update kUpdates[]{
    {R"({"mine":1.50,"autonomyMode":"yolo","huge":123456789012345678901234567890})", kPanic,
        R"({"mine":1.50,"autonomyMode":"panic","huge":123456789012345678901234567890})"},
    {"{\n  \"a\" : {\"autonomyMode\": \"yolo\", \"x\": [\"}\\\"]\"]},\n  \"autonomyMode\" : \"yolo\"\n}\n", kPanic,
        "{\n  \"a\" : {\"autonomyMode\": \"yolo\", \"x\": [\"}\\\"]\"]},\n  \"autonomyMode\" : \"panic\"\n}\n"},
    {"{\n  \"dailyMutationCap\": \"7\"\n}\n", kPanic, // what cannot be used stays
        "{\n  \"dailyMutationCap\": \"7\",\n  \"autonomyMode\": \"panic\"\n}\n"},
    {"\xEF\xBB\xBF{ }", kPanic, "\xEF\xBB\xBF{\"autonomyMode\":\"panic\" }"},
    {R"({"autonomyMode":"panic"})", kPanic, R"({"autonomyMode":"panic"})"},
    {R"({"imapAccounts":[{"email":"b","host":"c"}],"autonomyMode":"yolo"})", kPanic,
        R"({"imapAccounts":[{"email":"b","host":"c"}],"autonomyMode":"panic"})"},
    {R"({"autonomyMode":"yolo","autonomy\u004dode":"copilote"})", kPanic, // either may count for another reader
        R"({"autonomyMode":"panic","autonomy\u004dode":"panic"})"},
    {R"({"yoloMode":true,"x":1,"yoloMode":false})", kAddress,
        R"({"x":1,"autonomyMode":"copilote","notifyEmail":"me@x.org"})"},
    {R"({"yoloMode":true})", kAddress, R"({"autonomyMode":"yolo","notifyEmail":"me@x.org"})"},
    {R"({"terminalApp":"xterm","yoloMode":1})",
        [](HarnessConfig& c) {
            c.terminalApp.reset();
            c.autonomyMode = AutonomyMode::panic;
        },
        R"({"autonomyMode":"panic"})"},
    {R"({"imapAccounts":[ {"host":"h","email":"a@b","port":993.0,"mailAccountName":"G","note":[1e2]} ]})",
        kSecondAccount,
        R"({"imapAccounts":[{"host":"h","email":"a@b","port":993.0,"mailAccountName":"G","note":[1e2]},)"
        R"({"mailAccountName":"H","email":"c@d","host":"h","port":993}]})"},
    {R"({"imapAccounts":[{"email":"b"}],"x":1})", kSecondAccount,
        R"({"imapAccounts":[{"mailAccountName":"H","email":"c@d","host":"h","port":993}],"x":1})", true},
    {R"({"autonomyMode":"turbo"})", kPanic, R"({"autonomyMode":"panic"})", true},
    {R"({"autonomyMode":"turbo"})", kAddress, R"({"autonomyMode":"turbo","notifyEmail":"me@x.org"})"},
    {R"({"notifyEmail":"old@x.org","autonomyMode":"yolo",})", kPanic,
        R"({"autonomyMode":"panic","imapAccounts":[],"dailyMutationCap":100,"notifyEmail":"","askChannel":"mail","askCleanup":"archive"})",
        true},
};

TEST_F(ConfigFile, anUpdateWritesOnlyWhatChanges)
{
    for (const Update& c : kUpdates) {
        SCOPED_TRACE(c.before);
        fs::remove_all(dir / "home");
        test::writeFile(file, c.before);
        const auto update = HarnessConfig::update(c.change);
        EXPECT_EQ(update.failure, "");
        EXPECT_EQ(test::readFile(file), c.after);
        HarnessConfig expected = HarnessConfig::decode(c.before);
        c.change(expected);
        EXPECT_EQ(HarnessConfig::load(), expected);
        const fs::path kept = file.string() + ".damaged";
        EXPECT_EQ(fs::exists(kept) ? test::readFile(kept) : "", c.keepsOld ? c.before : "");
        EXPECT_EQ(update.notice.find(kept.string()) != std::string::npos, c.keepsOld) << update.notice;
    }
}

TEST_F(ConfigFile, nothingKeptBesideIsOverwritten)
{
    for (const char* text : {"{,", "[", "{,", "["}) {
        test::writeFile(file, text);
        EXPECT_EQ(HarnessConfig::update(kPanic).failure, "");
    }
    EXPECT_EQ(test::readFile(file.string() + ".damaged"), "{,");
    EXPECT_EQ(test::readFile(file.string() + ".damaged.2"), "[");
    EXPECT_EQ(test::tree(dir / "home").size(), 4U);
}

TEST_F(ConfigFile, whatCannotBeReadOrKeptIsNotTouched)
{
    const auto fails = [&](const std::string& reason) {
        const auto update = HarnessConfig::update(kPanic, std::chrono::milliseconds(50));
        EXPECT_NE(update.failure.find(reason), std::string::npos) << update.failure;
    };
    test::writeFile(file, "{}");
    fs::resize_file(file, 2'000'000'000);
    EXPECT_EQ(HarnessConfig::load(), HarnessConfig{});
    EXPECT_NE(HarnessConfig::complaint().find("File too large"), std::string::npos);
    fails("File too large");
    EXPECT_EQ(fs::file_size(file), 2'000'000'000U);

    test::writeFile(file, "{,");
    fs::create_directories(file.string() + ".damaged");
    for (int number = 2; number <= 100; ++number)
        test::writeFile(file.string() + ".damaged." + std::to_string(number), "x");
    fails("look at them");
    EXPECT_EQ(test::readFile(file), "{,");

    fs::remove_all(dir / "home");
    fs::create_directories(dir / "home/.lock");
    fails("Is a directory");
    fs::remove_all(dir / "home");
    test::writeFile(dir / "home", "in the way");
    fails("cannot be created");
}

TEST_F(ConfigFile, aLinkStaysALinkAndTheOldIsKeptInTheHome)
{
    test::writeFile(dir / "dotfiles/mervo.json", "{,");
    fs::create_directories(dir / "home");
    fs::create_symlink("../dotfiles/mervo.json", file);
    EXPECT_EQ(HarnessConfig::update(kPanic).failure, "");
    EXPECT_TRUE(fs::is_symlink(file));
    EXPECT_EQ(HarnessConfig::load().autonomyMode, AutonomyMode::panic);
    EXPECT_EQ(test::tree(dir / "dotfiles"), std::set<std::string>{"mervo.json"});
    EXPECT_EQ(test::readFile(file.string() + ".damaged"), "{,");
}

TEST_F(ConfigFile, deepAndRepeatedMembersCostLittle)
{
    const std::string deep = std::string(400'000, '[') + std::string(400'000, ']');
    const std::string many = "{\"x\":0" + test::repeated(40'000, ",\"autonomyMode\":1");
    const std::string objects = test::repeated(150'000, "{\"a\":") + "1" + std::string(150'000, '}');
    for (const std::string& text :
        {"{\"imapAccounts\":" + deep + "}", many + "}", objects, std::string(1'000'000, '[')}) {
        test::writeFile(file, text);
        EXPECT_EQ(HarnessConfig::update(kPanic).failure, "");
        EXPECT_EQ(HarnessConfig::update(kSecondAccount).failure, "");
        HarnessConfig expected;
        kPanic(expected);
        kSecondAccount(expected);
        EXPECT_EQ(HarnessConfig::load(), expected);
    }
}

} // namespace
} // namespace mervo
