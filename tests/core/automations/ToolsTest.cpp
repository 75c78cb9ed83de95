#include "core/automations/tools/AutomationArguments.h"
#include "core/automations/tools/AutomationText.h"
#include "core/automations/tools/AutomationTools.h"
#include "core/foundation/FailureOf.h"
#include "platform/programs.h"
#include "tests/support/Files.h"

#include <gtest/gtest.h>

namespace mervo {
namespace {

using Draft = AutomationDraft;

class AutomationTool : public testing::Test {
protected:
    AutomationTool()
    {
        setenv("MERVO_HOME", home.string().c_str(), 1);
        setenv("TZ", "UTC", 1);
        loop("agent", R"({"name":"agent","model":"opus","client":"codex","visible":false,"screen":1,"cwd":"/w",
            "schedule":{"type":"calendar","hour":8,"minute":5}})");
        test::writeFile(home / "automations/agent/AGENT.md", "do\nit");
        loop("script", R"({"name":"script","kind":"script","command":"ls","notifyOnFail":true})");
        loop("tool",
            R"({"name":"tool","kind":"script","system":true,"command":"cd / && '/x/mervo' run mail.list n=1"})");
        test::writeFile(
            home / ".runtime/state/tool.json", R"({"enabled":false,"lastRun":"2026-03-01T08:15:42Z","lastExit":143})");
    }
    ~AutomationTool() override
    {
        unsetenv("MERVO_HOME");
        unsetenv("TZ");
    }
    void loop(const std::string& name, std::string_view json) const
    {
        test::writeFile(home / ("automations/" + name + "/loop.json"), json);
    }

    test::TempDir home;
};

TEST_F(AutomationTool, refusesWhatItCannotMake)
{
    EXPECT_TRUE(failureOf([&] { AutomationTools::add().build({{"name", "-x"}, {"every", "5"}}); }));
    EXPECT_EQ(failureOf([&] {
        AutomationTools::edit().build({{"name", "tool"}, {"prompt", "p"}});
    }),
        "'tool' is a tool automation - rm + add to change its kind");
    EXPECT_EQ(failureOf([&] {
        AutomationTools::edit().build({{"name", "agent"}, {"tool", "t"}});
    }),
        "'agent' is an agent automation - rm + add to change its kind");
    for (const Tool* tool : AutomationTools::all()) {
        if (tool->id != "auto.list" && tool->id != "auto.add") {
            EXPECT_EQ(failureOf([&] {
                tool->build({{"name", "../a"}});
            }),
                "no automation named '../a' (see auto.list)");
        }
    }
}

TEST_F(AutomationTool, makesDraftsOfArguments)
{
    const Draft agent{.name = "n",
        .work = Draft::Agent{.prompt = "p", .model = "sonnet", .client = "claude", .effort = "", .visible = true},
        .schedule = Automation::Interval{5}};
    EXPECT_EQ(AutomationArguments::newDraft({{"name", "n"}, {"every", "5"}, {"prompt", "p"}, {"screen", "x"}}), agent);
    const Draft tool{.name = "n",
        .work = Draft::Tool{"ask.harvest", "k=v", true},
        .schedule = Automation::Hours{{8, 12}, 0},
        .cwd = "~",
        .enabled = false};
    EXPECT_EQ(AutomationArguments::newDraft({{"name", "n"}, {"hours", "8, 12"}, {"tool", "ask.harvest"},
                  {"args", "k=v"}, {"notifyOnFail", "yes"}, {"cwd", "~"}, {"disabled", "true"}}),
        tool);
}

TEST_F(AutomationTool, changesOnlyWhatIsNamed)
{
    const Draft agent{.name = "agent",
        .work =
            Draft::Agent{
                .prompt = "do\nit", .model = "opus", .client = "codex", .effort = "", .visible = false, .screen = 1},
        .schedule = Automation::Calendar{7, 0},
        .cwd = "/w"};
    EXPECT_EQ(AutomationArguments::changedDraft({{"name", "agent"}, {"at", "7:00"}}), agent);
    const std::string kept = "cd / && '/x/mervo' run mail.list n=1";
    const std::pair<Args, Draft::Work> cases[] = {{{{"name", "tool"}, {"every", "5"}}, Draft::Script{kept, false}},
        {{{"name", "tool"}, {"args", "n=2"}}, Draft::Tool{"mail.list", "n=2", false}},
        {{{"name", "tool"}, {"tool", "t"}}, Draft::Tool{"t", "n=1", false}},
        {{{"name", "tool"}, {"command", "ls"}}, Draft::Script{"ls", false}},
        {{{"name", "script"}, {"tool", "t"}}, Draft::Tool{"t", "", true}},
        {{{"name", "script"}, {"args", "x"}, {"notifyOnFail", "FALSE"}}, Draft::Script{"ls", false}}};
    for (const auto& [args, work] : cases) {
        const auto draft = AutomationArguments::changedDraft(args);
        EXPECT_EQ(draft.work, work) << draft.work.index();
        EXPECT_EQ(draft.enabled, draft.name != "tool");
    }
    EXPECT_TRUE(AutomationArguments::changedDraft({{"name", "tool"}, {"disabled", "false"}}).enabled);
}

TEST_F(AutomationTool, showsAutomationsAndLogs)
{
    EXPECT_EQ(AutomationTools::list().nativeRun({}),
        "  agent [agent/bg] daily 8:05  never ran  - do it\n"
        "  script [script] every 6h  never ran  - ls\n"
        "✗ tool [tool [sys]] every 6h  FAILED(exit 143) @ 2026-03-01 08:15  - mail.list n=1");
    EXPECT_EQ(AutomationTools::remove().preview({{"name", "agent"}}), "agent automation, daily 8:05 - do it");
    EXPECT_EQ(AutomationText::list({}), "(no automations - auto.add to create one)");
    const auto log = [](const std::string& lines) {
        return AutomationTools::log().nativeRun({{"name", "tool"}, {"lines", lines}});
    };
    EXPECT_EQ(log("1"), "(no log yet for 'tool')");
    test::writeFile(home / ".runtime/logs/tool.log", "a\n\nb\nc\n");
    const std::pair<const char*, const char*> cases[] = {
        {"2", "b\nc"}, {"3", "\nb\nc"}, {"x", "a\n\nb\nc"}, {"0", ""}, {"-1", ""}};
    for (const auto& [lines, text] : cases)
        EXPECT_EQ(log(lines), text) << lines;
}

} // namespace
} // namespace mervo
