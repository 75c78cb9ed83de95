#include "core/automations/engine/AutomationListing.h"
#include "core/automations/engine/RondelEngine.h"
#include "core/automations/model/AgentClients.h"
#include "tests/support/Files.h"

#include <gtest/gtest.h>
#include <unistd.h>

using namespace mervo;

namespace {

/// A home of its own, which the engine takes for the owner's.
class AutomationFolders : public testing::Test {
protected:
    AutomationFolders() { setenv("MERVO_HOME", home_.string().c_str(), 1); }
    ~AutomationFolders() override { unsetenv("MERVO_HOME"); }

    void loop(const std::string& folder, std::string_view json) const
    {
        test::writeFile(home_ / ("automations/" + folder + "/loop.json"), json);
    }
    void runtime(const std::string& file, std::string_view text) const
    {
        test::writeFile(home_ / (".runtime/" + file), text);
    }
    static Automation only()
    {
        const auto all = RondelEngine::list();
        return all.size() == 1 ? all.front() : Automation{};
    }

    test::TempDir home_;
};

TEST(Automations, nameTheirSchedules)
{
    using A = Automation;
    const std::pair<A::Schedule, const char*> cases[] = {{A::Interval{5}, "every 5m"}, {A::Interval{90}, "every 90m"},
        {A::Interval{60}, "every 1h"}, {A::Interval{360}, "every 6h"}, {A::Interval{1440}, "daily"},
        {A::Interval{2880}, "every 2d"}, {A::Interval{1500}, "every 25h"}, {A::Interval{0}, "every 0d"},
        {A::Calendar{8, 5}, "daily 8:05"}, {A::Calendar{0, 0}, "daily 0:00"},
        {A::Hours{{16, 8, 12}, 30}, "at 16,8,12h"}, {A::Hours{{}, 0}, "at h"}};
    for (const auto& [schedule, label] : cases)
        EXPECT_EQ(scheduleLabel(schedule), label);
}

TEST(Automations, previewThePromptsFirstWords)
{
    EXPECT_EQ(promptPreview("# Title\n\n> quote\n  Read **all** `mail`  \nmore"), "Read all mail");
    EXPECT_EQ(promptPreview("#only\n\n"), "");
    EXPECT_EQ(promptPreview(std::string(300, 'x')), std::string(120, 'x') + "...");
    EXPECT_EQ(AgentClients::client("nobody").id, "claude");
    EXPECT_EQ(AgentClients::client("agy").display, "Antigravity");
}

TEST_F(AutomationFolders, areReadWithEveryKeyAndItsDefault)
{
    loop("bare", R"({"name":"bare"})");
    Automation expected;
    expected.name = "bare";
    EXPECT_EQ(only(), expected) << "a six-hourly, visible, enabled agent";

    loop("bare", R"({"name":"bare","client":"nobody","model":"opus","effort":"high","cwd":"/srv","visible":false,
        "screen":2,"system":true,"notifyOnFail":true,"prompt":"from the file",
        "schedule":{"type":"hours","hours":[16,8],"minute":5}})");
    runtime("state/bare.json", R"({"enabled":false,"lastRun":"2026-03-01T08:15:42Z","lastExit":137,"other":1})");
    expected = {.name = "bare",
        .prompt = "from the file",
        .model = "opus",
        .client = "nobody",
        .effort = "high",
        .cwd = "/srv",
        .schedule = Automation::Hours{{16, 8}, 5},
        .visible = false,
        .screen = 2,
        .notifyOnFail = true,
        .enabled = false,
        .isSystem = true,
        .lastRun = Timestamps::date("2026-03-01T08:15:42Z"),
        .lastExit = 137};
    EXPECT_EQ(only(), expected);
    test::writeFile(home_ / "automations/bare/AGENT.md", "# Do\nit");
    EXPECT_EQ(only().prompt, "# Do\nit");
}

TEST_F(AutomationFolders, tellToolsFromScriptsByTheirCommand)
{
    const std::pair<const char*, Automation::Kind> cases[] = {
        {R"({"name":"a","kind":"script","command":"'/opt/mervo' run ask.harvest"})", Automation::Kind::tool},
        {R"({"name":"a","kind":"script","command":"npm run build"})", Automation::Kind::script},
        {R"({"name":"a","kind":"script","command":"mervo doctor"})", Automation::Kind::script},
        {R"({"name":"a","kind":"script"})", Automation::Kind::script},
        {R"({"name":"a","kind":"other","command":"mervo run x"})", Automation::Kind::agent}};
    for (const auto& [json, kind] : cases) {
        loop("a", json);
        EXPECT_EQ(only().kind, kind) << json;
    }
}

TEST_F(AutomationFolders, runWhileTheLocksProcessLives)
{
    loop("a", R"({"name":"a"})");
    const std::pair<std::string, bool> cases[] = {{std::to_string(getpid()), true}, {"999999999999", false},
        {"0", false}, {"-1", false}, {"", false}, {"12x", false}};
    for (const auto& [pid, running] : cases) {
        runtime("run/a.lock.d/pid", pid);
        EXPECT_EQ(only().running, running) << pid;
    }
}

TEST_F(AutomationFolders, areListedByNameWithoutWhatCannotBeRead)
{
    loop("b", R"({"name":"b"})");
    loop("a", R"({"name":"a","schedule":7,"screen":"x","visible":3,"client":[]})");
    for (const auto* damaged : {"", "[]", "{\"name\":7}", "{}", "{\"name\":\"x\"", "\xff\xfe"})
        loop("damaged" + std::to_string(*damaged), damaged);
    test::writeFile(home_ / "automations/no-loop/AGENT.md", "x");
    test::writeFile(home_ / "automations/stray.txt", "x");
    loop("escape", R"({"name":"../../../etc/passwd"})");
    runtime("state/a.json", "no json");
    const auto all = RondelEngine::list();
    ASSERT_EQ(all.size(), 3U);
    EXPECT_EQ(all[0].name, "../../../etc/passwd");
    EXPECT_TRUE(RondelEngine::logURL(all[0].name).empty()) << "a name is no way out of the folder";
    EXPECT_EQ(all[1].name, "a");
    EXPECT_EQ(all[1].schedule, Automation::Schedule(Automation::Interval{360}));
    EXPECT_TRUE(all[1].enabled && all[1].visible);
    EXPECT_EQ(all[2].name, "b");
    EXPECT_EQ(RondelEngine::logURL("b"), home_ / ".runtime/logs/b.log");
}

TEST_F(AutomationFolders, listedAgainAndAgainShowEveryChange)
{
    AutomationListing listing;
    const auto seen = [&] {
        EXPECT_EQ(listing.list(), RondelEngine::list());
        return listing.list().size();
    };
    EXPECT_EQ(seen(), 0U);
    loop("b", R"({"name":"other"})");
    loop("a", R"({"name":"a"})");
    EXPECT_EQ(seen(), 2U);
    for (int i = 0; i < 20; ++i) { // of one length, perhaps at one time
        runtime("state/a.json", i % 2 == 0 ? R"({"lastExit":1})" : R"({"lastExit":2})");
        test::writeFile(home_ / "automations/a/AGENT.md", i % 2 == 0 ? "one" : "two");
        seen();
    }
    runtime("run/a.lock.d/pid", std::to_string(getpid()));
    EXPECT_TRUE(listing.list().front().running);
    std::filesystem::remove(home_ / "automations/a/AGENT.md");
    std::filesystem::remove_all(home_ / ".runtime");
    loop("a", "{");
    EXPECT_EQ(seen(), 1U);
    std::filesystem::remove_all(home_ / "automations/b");
    EXPECT_EQ(seen(), 0U);
}

} // namespace
