#include "core/automations/model/AutomationDraft.h"
#include "core/automations/model/AutomationName.h"
#include "core/automations/model/LoopObject.h"
#include "core/automations/model/RunLock.h"
#include "core/automations/model/RunPaths.h"
#include "core/automations/model/RunState.h"
#include "core/automations/model/RunTimes.h"
#include "core/foundation/Text.h"
#include "platform/programs.h"
#include "tests/support/Files.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <thread>

namespace mervo {
namespace {

using Json = nlohmann::json;

const Timestamps::Time kThen = *Timestamps::date("2026-03-01T08:15:42Z");
const std::string kMervo = Text::shellQuoted(platform::helper("mervo").string());

TEST(AutomationNames, areFileNamesWordsAndSessions)
{
    for (const std::string& name : {std::string("a"), std::string("A.b_C-9"), std::string("..."), std::string("_"),
             std::string(".a"), std::string(200, 'x')})
        EXPECT_TRUE(AutomationName::isValid(name)) << name;
    for (const std::string& name : {std::string(), std::string("."), std::string(".."), std::string("-x"),
             std::string("a b"), std::string("a/b"), std::string("é"), std::string("a\n"), std::string(201, 'x'),
             std::string(255, 'x'), std::string("a\0", 2)}) {
        EXPECT_FALSE(AutomationName::isValid(name)) << name;
        EXPECT_THROW(RunPaths("/h", name), std::invalid_argument);
    }
    EXPECT_EQ(AutomationName::sessionName("a.b..c"), "a%2Eb%2E%2Ec");
    EXPECT_EQ(RunPaths("/h", "a.b").lockHolder(), "/h/.runtime/run/a.b.lock.d/pid");
    EXPECT_EQ(RunPaths("/h", "a").jobLog(), "/h/.runtime/logs/a.launchd.log");
}

TEST(LoopObjects, areWrittenToTheByte)
{
    setenv("HOME", "/home/o", 1);
    const AutomationDraft agent{.name = "a",
        .work = AutomationDraft::Agent{.prompt = "x", .model = "opus", .client = "claude", .effort = "", .screen = 2},
        .schedule = Automation::Hours{{16, 8}, 5},
        .cwd = "~/é/x"};
    EXPECT_EQ(LoopObject::text(LoopObject::make(agent, kThen)), R"({
  "client": "claude",
  "createdAt": 1772352942,
  "cwd": "/home/o/é/x",
  "model": "opus",
  "name": "a",
  "schedule": {
    "hours": [
      16,
      8
    ],
    "minute": 5,
    "type": "hours"
  },
  "screen": 2,
  "timeoutSeconds": 0,
  "visible": true
})");
    const AutomationDraft tool{.name = "t",
        .work = AutomationDraft::Tool{.tool = "ask.harvest", .args = " \n", .notifyOnFail = true},
        .schedule = Automation::Interval{10}};
    EXPECT_EQ(LoopObject::make(tool, kThen),
        (Json{{"name", "t"}, {"createdAt", 1772352942}, {"kind", "script"}, {"command", kMervo + " run ask.harvest"},
            {"timeoutSeconds", 0}, {"notifyOnFail", true},
            {"schedule", {{"type", "interval"}, {"everyMinutes", 10}}}}));
    const AutomationDraft script{.name = "s", .work = AutomationDraft::Script{.command = "ls"}};
    EXPECT_EQ(LoopObject::make(script, kThen)["schedule"]["everyMinutes"], 360);
    for (const AutomationDraft& draft : {agent, tool, script}) {
        const auto read = LoopObject::automation(LoopObject::make(draft, kThen));
        EXPECT_EQ(read->schedule, draft.schedule);
        EXPECT_EQ(static_cast<std::size_t>(read->kind), draft.name == "t" ? 2U : draft.work.index());
    }
}

TEST(LoopObjects, keepWhatAnEditDoesNotName)
{
    const Json stored{{"name", "a"}, {"createdAt", 7}, {"system", true}, {"dangerous", true}, {"own", {1}},
        {"prompt", "old"}, {"enabled", false}, {"effort", "high"}, {"screen", 1}, {"cwd", "/w"},
        {"timeoutSeconds", 60}};
    const AutomationDraft draft{.name = "a",
        .work = AutomationDraft::Agent{.prompt = "p", .model = "", .client = "codex", .visible = false},
        .schedule = Automation::Calendar{8, 30}};
    EXPECT_EQ(LoopObject::edited(stored, draft),
        (Json{{"name", "a"}, {"createdAt", 7}, {"system", true}, {"dangerous", true}, {"own", {1}}, {"cwd", "/w"},
            {"timeoutSeconds", 60}, {"model", ""}, {"client", "codex"}, {"visible", false},
            {"schedule", {{"type", "calendar"}, {"hour", 8}, {"minute", 30}}}}));
    EXPECT_EQ(LoopObject::edited({{"timeoutSeconds", -1}}, draft)["timeoutSeconds"], 0);
}

TEST(ToolCommands, areReadBack)
{
    const struct {
        const char *command, *tool, *args;
    } cases[] = {{"'/opt/a run b/mervo' run mail.notify subject='a run b'", "mail.notify", "subject='a run b'"},
        {"mervo run ask.harvest", "ask.harvest", ""}, {"x/mervo run  t   k=v  k=w ", "t", "k=v  k=w"}};
    for (const auto& [command, tool, args] : cases) {
        const auto call = ToolCall::ofCommand(command);
        EXPECT_EQ(call.tool, tool);
        EXPECT_EQ(call.args, args);
    }
    const auto call = ToolCall::ofCommand(AutomationDraft::toolCommand("t", " a='b' "));
    EXPECT_EQ(call.tool + "|" + call.args, "t|a='b'");
}

TEST(RunStates, keepWhatOthersWroteAlsoAtTheSameTime)
{
    const test::TempDir home;
    const auto file = RunPaths(home.path(), "a").state();
    EXPECT_EQ(RunState::read(file), RunState{});
    test::writeFile(file, R"({"own":[1],"enabled":false,"lastExit":3.0,"lastRun":7})");
    EXPECT_EQ(RunState::read(file), (RunState{.enabled = false, .lastExit = 3}));
    {
        const std::jthread engine([&] {
            for (int i = 0; i < 50; ++i)
                RunState::setEnabled(file, i % 2 == 0);
        });
        for (int i = 0; i < 50; ++i) {
            EXPECT_FALSE(RunState::setLastRun(file, kThen, i));
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
            EXPECT_EQ(RunState::read(file).lastExit, i);
        }
    }
    EXPECT_EQ(test::readFile(file), R"({"enabled":false,"lastExit":49,"lastRun":"2026-03-01T08:15:42Z","own":[1]})");
    test::writeFile(file, "[damaged");
    EXPECT_FALSE(RunState::setEnabled(file, false));
    EXPECT_EQ(test::readFile(file), R"({"enabled":false})");
    std::filesystem::remove_all(home / ".runtime");
    test::writeFile(home / ".runtime", "no folder");
    EXPECT_TRUE(RunState::setEnabled(file, true)) << "a failure is told";
}

TEST(RunTimes, areNextOrMissed)
{
    using namespace std::chrono;
    using Schedule = Automation::Schedule;
    const Schedule hourly = Automation::Interval{60}, early = Automation::Calendar{7, 30},
                   often = Automation::Hours{{16, 8}, 15};
    const auto at = [](const char* text) { return floor<seconds>(*Timestamps::date(text)); };
    const auto east = [](platform::Moment) { return seconds(3600); };
    const auto shown = [](std::optional<platform::Moment> moment) {
        return moment ? Timestamps::string(*moment) : std::string();
    };
    const struct {
        Schedule schedule;
        const char *since, *last, *next, *missed;
    } cases[] = {// now: 2026-03-02T12:00:00Z, on the wall 13:00
        {hourly, "2026-03-02T08:15:00Z", "2026-03-02T11:20:00Z", "2026-03-02T12:15:00Z", ""},
        {hourly, "2026-03-02T08:15:00Z", "2026-03-02T10:57:00Z", "2026-03-02T12:15:00Z", "2026-03-02T11:57:00Z"},
        {hourly, "2026-03-02T11:00:00Z", "2026-03-01T10:57:00Z", "2026-03-02T13:00:00Z", ""}, // two minutes' grace
        {Automation::Interval{INT64_MAX}, "2026-03-02T11:00:00Z", "", "2126-02-06T11:00:00Z", ""},
        {early, "2026-03-01T00:00:00Z", "2026-03-02T06:30:00Z", "2026-03-03T06:30:00Z", ""},
        {early, "2026-03-01T00:00:00Z", "2026-03-02T06:29:59Z", "2026-03-03T06:30:00Z", "2026-03-02T06:30:00Z"},
        {early, "2026-03-02T07:00:00Z", "", "2026-03-03T06:30:00Z", ""}, // made later
        {often, "2026-03-01T00:00:00Z", "", "2026-03-02T15:15:00Z", "2026-03-02T07:15:00Z"},
        {Automation::Calendar{12, 59}, "2026-03-01T00:00:00Z", "2026-03-01T12:00:00Z", "2026-03-03T11:59:00Z", ""},
        {Automation::Hours{{}, 0}, "2026-03-01T00:00:00Z", "", "", ""},
        {Automation::Calendar{4294967303, 30}, "2026-03-01T00:00:00Z", "", "", ""}};
    for (const auto& [schedule, since, last, next, missed] : cases) {
        Automation automation{.schedule = schedule, .lastRun = Timestamps::date(last)};
        const auto now = at("2026-03-02T12:00:00Z");
        EXPECT_EQ(shown(RunTimes::next(automation, at(since), now, east)), next) << since << last;
        EXPECT_EQ(shown(RunTimes::missed(automation, at(since), now, east)), missed) << since << last;
        automation.running = true;
        EXPECT_FALSE(RunTimes::missed(automation, at(since), now, east));
        automation.enabled = false;
        EXPECT_FALSE(RunTimes::next(automation, at(since), now, east));
    }
}

TEST(RunLocks, nameTheirHolder)
{
    const test::TempDir folder;
    const std::pair<const char*, std::optional<std::int32_t>> cases[] = {
        {" 12\n", 12}, {"+7", 7}, {"-1", -1}, {"", {}}, {"12x", {}}, {"+-1", {}}, {"2147483648", {}}};
    for (const auto& [text, pid] : cases) {
        test::writeFile(folder / "pid", text);
        EXPECT_EQ(RunLock::holder(folder / "pid"), pid) << text;
    }
}

} // namespace
} // namespace mervo
