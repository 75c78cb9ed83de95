#include "core/automations/engine/EngineError.h"
#include "core/automations/engine/RondelEngine.h"
#include "core/automations/engine/Tmux.h"
#include "core/automations/model/RunPaths.h"
#include "core/automations/model/RunState.h"
#include "core/foundation/FailureOf.h"
#include "platform/programs.h"
#include "platform/propertylist/PropertyList.h"
#include "tests/support/Files.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <sys/wait.h>
#include <unistd.h>

namespace mervo {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using Draft = AutomationDraft;

/// A home and a user's home of their own. The system's programs run, those of the bundle are recorded.
class Engine : public testing::Test {
protected:
    Engine()
    {
        setenv("MERVO_HOME", home.string().c_str(), 1);
        setenv("HOME", user.string().c_str(), 1);
        setenv("TMPDIR", user.string().c_str(), 1);
    }
    ~Engine() override
    {
        Tmux(home.path()).run({"kill-server"});
        for (const char* name : {"MERVO_HOME", "TMPDIR"})
            unsetenv(name);
    }

    platform::Outcome run(const platform::Command& command)
    {
        if (!command.program.starts_with(platform::bundle().string()))
            return platform::run(command);
        std::string line = std::filesystem::path(command.program).filename();
        for (const std::string& word : command.arguments)
            line += " " + (word.starts_with("/") ? std::filesystem::path(word).filename().string() : word);
        ran.push_back(line);
        platform::Outcome outcome;
        outcome.status = status;
        outcome.error = "refused\n";
        return outcome;
    }
    std::vector<std::string> takeRan() { return std::exchange(ran, {}); }
    std::string launchctl(const std::string& verb, const std::string& name) const
    {
        return "launchctl " + verb + " gui/" + std::to_string(getuid()) + " org.mervolabs.rondel." + name + ".plist";
    }
    std::filesystem::path list(const std::string& name) const
    {
        return user / ("Library/LaunchAgents/org.mervolabs.rondel." + name + ".plist");
    }
    std::string job(const std::string& name) const { return test::readFile(list(name)); }
    RunPaths paths(const std::string& name) const { return {home.path(), name}; }
    static Draft script(const std::string& name, Automation::Schedule schedule = Automation::Calendar{8, 30})
    {
        return {.name = name, .work = Draft::Script{.command = "true"}, .schedule = std::move(schedule)};
    }

    test::TempDir home, user;
    std::vector<std::string> ran;
    int status = 0;
    RondelEngine engine{[this](const platform::Command& command) { return run(command); }};
};

TEST_F(Engine, makesAJobToTheByte)
{
    engine.add(script("a.b"));
    const std::string log = (home / ".runtime/logs/a.b.launchd.log").string();
    EXPECT_EQ(job("a.b"),
        R"(<?xml version="1.0" encoding="UTF-8"?>
<!DOCTYPE plist PUBLIC "-//Apple//DTD PLIST 1.0//EN" "http://www.apple.com/DTDs/PropertyList-1.0.dtd">
<plist version="1.0">
<dict>
	<key>EnvironmentVariables</key>
	<dict>
		<key>MERVO_HOME</key>
		<string>)"
            + home.string() + R"(</string>
	</dict>
	<key>Label</key>
	<string>org.mervolabs.rondel.a.b</string>
	<key>ProcessType</key>
	<string>Interactive</string>
	<key>ProgramArguments</key>
	<array>
		<string>)"
            + platform::helper("mervo").string() + R"(</string>
		<string>auto-run</string>
		<string>a.b</string>
	</array>
	<key>RunAtLoad</key>
	<false/>
	<key>StandardErrorPath</key>
	<string>)"
            + log + R"(</string>
	<key>StandardOutPath</key>
	<string>)"
            + log + R"(</string>
	<key>StartCalendarInterval</key>
	<dict>
		<key>Hour</key>
		<integer>8</integer>
		<key>Minute</key>
		<integer>30</integer>
	</dict>
</dict>
</plist>
)");
    EXPECT_THAT(takeRan(), ElementsAre(launchctl("bootout", "a.b"), launchctl("bootstrap", "a.b")));
    EXPECT_EQ(test::readFile(paths("a.b").state()), R"({"enabled":true})");
}

TEST_F(Engine, turnsSchedulesIntoTheirKeys)
{
    unsetenv("MERVO_HOME");
    const auto key = [&](const Automation::Schedule& schedule, const char* name) {
        Draft draft = script("s", schedule);
        std::filesystem::exists(user / "mervo/automations/s") ? engine.edit(draft) : engine.add(draft);
        const auto read = platform::readPropertyList(job("s"));
        EXPECT_EQ(read->find("EnvironmentVariables"), nullptr);
        const auto* found = read->find(name);
        return found == nullptr ? platform::PropertyList{} : *found;
    };
    for (const auto& [minutes, seconds] :
        std::map<std::int64_t, std::int64_t>{{-5, 60}, {0, 60}, {1, 60}, {90, 5400}, {INT64_MAX, INT64_MAX / 60 * 60}})
        EXPECT_EQ(*key(Automation::Interval{minutes}, "StartInterval").as<std::int64_t>(), seconds);
    const auto times = key(Automation::Hours{{16, 8, 12}, 5}, "StartCalendarInterval");
    ASSERT_EQ(times.as<platform::PropertyList::Array>()->size(), 3U);
    EXPECT_EQ(*times.as<platform::PropertyList::Array>()->at(0).find<std::int64_t>("Hour"), 16);
    EXPECT_EQ(*times.as<platform::PropertyList::Array>()->at(2).find<std::int64_t>("Minute"), 5);
    EXPECT_EQ(key(Automation::Hours{{}, 5}, "StartCalendarInterval"), platform::PropertyList{});
}

TEST_F(Engine, refusesWhatIsNotThereOrTakenAndEveryBadName)
{
    engine.add(script("a"));
    const std::string before = test::readFile(paths("a").loop());
    takeRan();
    EXPECT_EQ(failureOf([&] { engine.add({.name = "a"}); }), "automation 'a' already exists (use edit)");
    EXPECT_EQ(test::readFile(paths("a").loop()), before);
    const std::pair<const char*, std::function<void(const std::string&)>> operations[] = {
        {"edit", [&](const std::string& name) { engine.edit({.name = name}); }},
        {"enable", [&](const std::string& name) { engine.setEnabled(name, true); }},
        {"remove", [&](const std::string& name) { engine.remove(name); }},
        {"run", [&](const std::string& name) { engine.runNow(name); }},
        {"stop", [&](const std::string& name) { engine.stop(name); }},
        {"attach", [&](const std::string& name) { engine.attach(name); }}};
    for (const auto& [what, operation] : operations) {
        EXPECT_EQ(failureOf([&] { operation("b"); }), "no such automation: b") << what;
        for (const std::string& name : {std::string("-x"), std::string("."), std::string(".."), std::string("../a"),
                 std::string("a b"), std::string(), std::string(255, 'n')}) {
            EXPECT_THAT(*failureOf([&] { operation(name); }), HasSubstr("cannot be the name")) << what << name;
            EXPECT_THAT(*failureOf([&] { engine.add({.name = name}); }), HasSubstr("cannot be the name")) << name;
        }
    }
    EXPECT_THAT(takeRan(), IsEmpty());
    test::writeFile(paths("d").loop(), "{damaged");
    EXPECT_THAT(*failureOf([&] { engine.edit({.name = "d"}); }), HasSubstr("is no JSON object"));
    EXPECT_EQ(failureOf([&] { engine.setEnabled("d", true); }), "no such automation: d");
    EXPECT_EQ(failureOf([&] { engine.stop("a"); }), "'a' is not running");
}

TEST_F(Engine, pausesResumesAndEdits)
{
    Draft draft{
        .name = "a", .work = Draft::Agent{.prompt = "# Do\n", .model = "opus", .client = "claude"}, .enabled = false};
    engine.add(draft);
    EXPECT_THAT(takeRan(), ElementsAre(launchctl("bootout", "a")));
    EXPECT_FALSE(std::filesystem::exists(list("a")));
    EXPECT_EQ(test::readFile(paths("a").instructions()), "# Do\n");
    status = 5; // a failed bootstrap leaves it enabled
    engine.setEnabled("a", true);
    EXPECT_TRUE(RondelEngine::find("a")->enabled && std::filesystem::exists(list("a")));
    EXPECT_FALSE(RunState::setLastRun(paths("a").state(), {}, 3));
    std::get<Draft::Agent>(draft.work).prompt = "other";
    engine.edit(draft);
    EXPECT_FALSE(std::filesystem::exists(list("a"))) << "an edit may pause";
    const auto edited = *RondelEngine::find("a");
    EXPECT_EQ(edited.prompt, "other");
    EXPECT_EQ(edited.lastExit, 3);
}

TEST_F(Engine, removesAllButTheLogs)
{
    engine.add(script("a"));
    engine.add(script("ab"));
    test::writeFile(paths("a").log(), "x");
    test::writeFile(paths("a").folder() / "JOURNAL.md", "x");
    engine.remove("a");
    EXPECT_FALSE(std::filesystem::exists(paths("a").folder()) || std::filesystem::exists(list("a"))
        || std::filesystem::exists(paths("a").state()));
    EXPECT_TRUE(std::filesystem::exists(paths("a").log()) && std::filesystem::exists(list("ab")));
}

TEST_F(Engine, leavesNothingWhereNothingCanBeWritten)
{
    engine.add(script("a"));
    test::writeFile(home / "automations/b", "no folder");
    EXPECT_THAT(*failureOf([&] { engine.add(script("b")); }), HasSubstr("could not be written"));
    std::filesystem::remove_all(home / ".runtime/state");
    test::writeFile(home / ".runtime/state", "no folder");
    EXPECT_THAT(*failureOf([&] { engine.add(script("c")); }), HasSubstr("could not be written"));
    EXPECT_FALSE(std::filesystem::exists(paths("c").folder())) << "half an automation is none";
    EXPECT_THAT(*failureOf([&] { engine.setEnabled("a", false); }), HasSubstr("could not be written"));
    EXPECT_TRUE(std::filesystem::exists(list("a"))) << "not paused";
}

TEST_F(Engine, stopsALiveSessionAndNoOther)
{
    if (Tmux::program().empty())
        GTEST_SKIP() << "no tmux";
    const Tmux tmux(home.path());
    for (const char* name : {"a.b", "ab", "a_b"})
        engine.add(script(name));
    for (const char* session : {"a%2Eb", "a_b", "abc"})
        ASSERT_EQ(tmux.run({"new-session", "-d", "-s", session, "sleep 60"}), 0);
    EXPECT_EQ(failureOf([&] { engine.stop("ab"); }), "'ab' is not running") << "the beginning of a name is not it";
    engine.stop("a.b");
    EXPECT_EQ(test::readFile(paths("a.b").done()), "143");
    EXPECT_FALSE(tmux.hasSession("a.b"));
    EXPECT_TRUE(tmux.hasSession("a_b"));
    engine.remove("a_b");
    EXPECT_FALSE(tmux.hasSession("a_b"));
    EXPECT_TRUE(tmux.hasSession("abc"));
}

TEST_F(Engine, stopsASupervisorAndWhatItStarted)
{
    engine.add(script("a"));
    const pid_t child = fork();
    if (child == 0) {
        execl("/bin/sh", "sh", "-c", "trap 'exit 9' USR1; sleep 60; echo $? > \"$0\"; sleep 60",
            (home / "ended").string().c_str(), nullptr);
        _exit(1);
    }
    test::writeFile(paths("a").lockHolder(), std::to_string(child));
    for (int i = 0; i < 200
         && platform::run({.program = "/usr/bin/pgrep", .arguments = {"-P", std::to_string(child)}}).status != 0;
         ++i)
        usleep(10'000);
    EXPECT_TRUE(RondelEngine::find("a")->running);
    engine.stop("a");
    int ended = 0;
    ASSERT_EQ(waitpid(child, &ended, 0), child);
    EXPECT_TRUE(WIFSIGNALED(ended) && WTERMSIG(ended) == SIGTERM);
    EXPECT_EQ(failureOf([&] { engine.stop("a"); }), "'a' is not running") << "its lock is stale";
}

TEST_F(Engine, startsARunThatNobodyWaitsFor)
{
    const test::TempDir log;
    std::string line;
    const RondelEngine started([&](const platform::Command& command) {
        line = command.program + " " + command.arguments.at(1);
        return platform::run({.program = "/bin/sh", .arguments = {"-c", "exit " + std::to_string(status)}});
    });
    engine.add(script("a"));
    started.runNow("a");
    EXPECT_EQ(
        line, "/bin/bash nohup '" + platform::helper("mervo").string() + "' auto-run 'a' --force >/dev/null 2>&1 &");
    status = 1;
    EXPECT_THAT(*failureOf([&] { started.runNow("a"); }), HasSubstr("could not be started"));
}

TEST_F(Engine, opensTheLiveSessionInTheChosenTerminal)
{
    engine.add(script("a.b"));
    const auto file = user / "mervo-attach-a.b.command";
    test::writeFile(user / "mine", "untouched");
    std::filesystem::create_symlink(user / "mine", file);
    engine.attach("a.b");
    const std::string script = test::readFile(file);
    EXPECT_THAT(script,
        HasSubstr("if tmux -S '" + home.string() + "/.runtime/run/rondel.sock' attach -t '=a%2Eb'; then\n  ( sleep 1; '"
            + platform::osascript().string() + "' - \"$TTY\" >/dev/null 2>&1 <<'OSA'\non run argv\n"));
    EXPECT_THAT(script, HasSubstr("tell application \"Terminal\""));
    EXPECT_EQ(test::readFile(user / "mine"), "untouched");
    EXPECT_EQ(platform::run({.program = "/bin/bash", .arguments = {"-n", file.string()}}).error, "");
    test::writeFile(home / "config.json", R"({"terminalApp":"/Applications/Foot.app"})");
    engine.attach("a.b");
    EXPECT_THAT(test::readFile(file), HasSubstr("; then\n  :\nfi\n"));
    EXPECT_EQ(takeRan().back(), "open -a Foot.app mervo-attach-a.b.command");
    EXPECT_EQ(std::filesystem::status(file).permissions(), std::filesystem::perms(0755));
    status = 1;
    EXPECT_EQ(failureOf([&] { engine.attach("a.b"); }), "refused");
}

TEST_F(Engine, rewritesTheJobsOfAMovedApplication)
{
    engine.add(script("a"));
    engine.add(script("b"));
    engine.setEnabled("b", false);
    test::writeFile(home / "automations/bad/loop.json", R"({"name":"../x"})");
    takeRan();
    engine.resyncIfRelocated();
    EXPECT_THAT(takeRan(), IsEmpty());
    const std::string current = job("a");
    for (const auto& [from, to] :
        {std::pair("Helpers/mervo<", "Old/mervo<"), {"a.launchd.log", "x.log"}, {"<plist", "(plist"}}) {
        std::string old = current;
        old.replace(old.rfind(from), std::string(from).size(), to);
        test::writeFile(list("a"), old);
        EXPECT_THAT(*failureOf([&] { engine.resyncIfRelocated(); }), HasSubstr("cannot be the name"));
        EXPECT_EQ(job("a"), current) << to;
        EXPECT_THAT(
            takeRan(), ElementsAre(launchctl("bootout", "a"), launchctl("bootstrap", "a"), launchctl("bootout", "b")));
    }
}

TEST_F(Engine, keepsTheSystemsOwnAutomation)
{
    const auto ensure = [&] { engine.ensureSystemLoop("ask-harvest", "ask.harvest", 10); };
    const auto loop = paths("ask-harvest").loop();
    ensure();
    const auto made = *RondelEngine::find("ask-harvest");
    EXPECT_TRUE(made.isSystem && made.notifyOnFail && made.enabled && made.kind == Automation::Kind::tool);
    EXPECT_EQ(made.command, "'" + platform::helper("mervo").string() + "' run ask.harvest");
    EXPECT_EQ(made.schedule, Automation::Schedule(Automation::Interval{10}));
    EXPECT_EQ(takeRan().size(), 2U);
    ensure();
    EXPECT_THAT(takeRan(), IsEmpty()) << "nothing to do";
    engine.setEnabled("ask-harvest", false);
    auto object = nlohmann::json::parse(test::readFile(loop));
    object["command"] = "'/old/mervo' run ask.harvest";
    object["schedule"]["everyMinutes"] = 30;
    object["own"] = 1;
    test::writeFile(loop, object.dump());
    ensure();
    object["command"] = *made.command;
    EXPECT_EQ(nlohmann::json::parse(test::readFile(loop)), object);
    EXPECT_FALSE(RondelEngine::find("ask-harvest")->enabled) << "a pause is the owner's";
}

} // namespace
} // namespace mervo
