#include "tests/frontends/cli/Cli.h"

#include <functional>
#include <nlohmann/json.hpp>
#include <unistd.h>

namespace mervo::test {

using nlohmann::json;
using testing::HasSubstr;
using testing::Not;

class DoctorTest : public Cli {
protected:
    void SetUp() override
    {
        writeProgram("desk-health",
            "#!/bin/sh\necho '[{\"id\":\"mail\",\"label\":\"Mail\",\"ok\":true,\"detail\":\"3 "
            "messages\",\"remedy\":\"\"}]'\n");
        writeProgram("launchctl", R"(#!/bin/sh
printf 'PID\tSTATUS\tRUNNER\tLABEL\n-\t0\town\torg.mervolabs.rondel.%s\n' late h)");
        for (const char* guide : {"llm-guide.md", "user-guide.md"})
            writeFile(contents() / "Resources" / "MervoCore_MervoCore.bundle" / guide, "guide");
        writeFile(contents() / "Helpers" / "mervo-mcp", "");
    }
    /// The check of this id, with the exit status under "exit".
    json check(const std::string& id) const
    {
        const Ended run = mervo({"doctor", "--json"}, {{"SCRIPT_ANSWER", answer}});
        for (json object : json::parse(run.out)) {
            if (object["id"] == id) {
                object["exit"] = run.status;
                return object;
            }
        }
        return {};
    }
    void expect(const std::string& id, const std::string& state, const std::string& detail) const
    {
        const json found = check(id);
        EXPECT_EQ(found["state"], state) << found;
        EXPECT_THAT(found["detail"].get<std::string>(), HasSubstr(detail));
        EXPECT_EQ(found["exit"], state == "broken" ? 1 : 0) << found;
        EXPECT_TRUE(state != "broken" || found["remedy"] != "") << found;
    }

    std::string answer = "ready"; ///< of the script host
};

TEST_F(DoctorTest, aSoundMachineIsSound)
{
    const Ended run = mervo({"doctor"}, {{"SCRIPT_ANSWER", "ready"}});
    EXPECT_EQ(run.status, 0) << run.out;
    EXPECT_THAT(run.out, HasSubstr("ok       Mail: 3 messages\n"));
    ASSERT_EQ(mervo(send()).status, 0);
    for (const std::string id : {"home", "config", "database", "scripts", "guides", "agents", "mail"})
        EXPECT_EQ(check(id)["state"], "works") << check(id);
    expect("pending", "works", "1 action waits");
    expect("agents", "works", (contents() / "Helpers" / "mervo-mcp").string());
}

TEST_F(DoctorTest, namesWhatIsWrongInTheHome)
{
    setMode("copilote");
    std::filesystem::permissions(home(), std::filesystem::perms(0755));
    expect("home", "limited", "open to other users");
    writeFile(home() / "pending" / "D\x1b.json", "{");
    expect("pending", "broken", "D<U+001B>.json");
    std::filesystem::remove_all(home() / "pending");

    std::filesystem::remove_all(home());
    writeFile(folder() / "home", "");
    expect("home", "broken", "is not a folder");
}

TEST_F(DoctorTest, namesAutomationsThatNobodyStartsAndRunsThatDidNotHappen)
{
    expect("automations", "works", "0, of which 0 paused");
    for (const std::string name : {"late", "off", "paused"})
        writeFile(home() / "automations" / name / "loop.json",
            R"({"name":")" + name + R"(","kind":"script","command":"true","schedule":{"everyMinutes":60}})");
    writeFile(home() / ".runtime/state/paused.json", R"({"enabled":false})");
    const auto job = folder() / "Library/LaunchAgents/org.mervolabs.rondel.late.plist";
    writeFile(job, "");
    expect("automations", "broken", "no job is loaded, so nothing starts: off");
    EXPECT_THAT(check("automations")["remedy"].get<std::string>(), HasSubstr("auto.enable"));
    std::filesystem::remove_all(home() / "automations/off");
    expect("automations", "works", "2, of which 1 paused");
    std::filesystem::last_write_time(job, std::filesystem::file_time_type::clock::now() - std::chrono::hours(3));
    expect("automations", "limited", "did not run when it was due: late (20");
    writeFile(home() / ".runtime/run/late.lock.d/pid", "2147483647");
    expect("automations", "limited", "was killed while it ran, and the next run tidies up: late");
    writeProgram("launchctl", "#!/bin/sh\nexit 1\n");
    expect("automations", "broken", "does not list");
}

TEST_F(DoctorTest, saysWhoGetsAShell)
{
    const auto looks = [&](const char* state, const char* detail) { expect("shell", state, detail); };
    looks("limited", "in copilote an agent that has only these tools gets a shell");
    addRules({rule("A", PolicyRule::Decision::ask, "auto.add")});
    looks("limited", "gets a shell");
    addRules({rule("B", PolicyRule::Decision::deny, "auto.*")});
    looks("works", "no agent gets a shell");
    RuleStore(std::make_shared<MervoDB>(home())).remove("B");
    setMode("panic");
    looks("works", "no agent gets a shell");
}

TEST_F(DoctorTest, aHomeAmongTheSourcesIsPartedByTheCommandsOfTheRemedy)
{
    const auto mine = folder() / "it's mine", sources = folder() / "it's mine-src";
    const Environment here{{"MERVO_HOME", "~/it's mine/"}, {"SCRIPT_ANSWER", "ready"}, {"SUDO_USER", std::nullopt}};
    const auto inMake = [&] { return runProgram(MERVO_SOURCE_DIR "/scripts/check-home", {}, environment(here), {}); };
    writeFile(mine / "automations/x/loop.json", "{}");
    writeFile(mine / ".git/HEAD", "the owner's own version control");
    EXPECT_EQ(inMake().status, 0) << inMake().err;
    EXPECT_THAT(mervo({"doctor"}, here).out, Not(HasSubstr("BROKEN   Home")));

    ASSERT_EQ(mervo(send(), here).status, 0);
    for (const char* source : {"CMakeLists.txt", "core/policy/CMakeLists.txt", "build/x"})
        writeFile(mine / source, readFile(MERVO_SOURCE_DIR "/CMakeLists.txt"));
    const Ended refused = inMake();
    EXPECT_EQ(refused.status, 1);
    const std::string commands = refused.err.substr(refused.err.find('\n') + 1);
    const std::string page = mervo({"doctor"}, here).out;
    EXPECT_THAT(page, HasSubstr("BROKEN   Home"));
    EXPECT_THAT(page, HasSubstr(commands)) << "one remedy in both";

    ASSERT_EQ(runProgram("/bin/sh", {"-c", commands}, environment(here), {}).status, 0) << commands;
    EXPECT_EQ(inMake().status, 0);
    EXPECT_THAT(mervo({"doctor"}, here).out, Not(HasSubstr("BROKEN")));
    EXPECT_THAT(mervo({"pending"}, here).out, HasSubstr("mail.send"));
    EXPECT_EQ(tree(sources),
        (std::set<std::string>{
            ".git", ".git/HEAD", "CMakeLists.txt", "core", "core/policy", "core/policy/CMakeLists.txt"}));
}

TEST_F(DoctorTest, triesTheDatabaseAsACallWouldAndWritesNothing)
{
    struct Case {
        const char* name;
        std::function<void(const std::filesystem::path&)> harm;
        const char* state;
        const char* detail;
        const char* remedy;
    };
    const auto execute = [](const char* sql) {
        return [sql](const std::filesystem::path& file) { Database(file).execute(sql); };
    };
    const auto replace = [](std::string bytes) {
        return [bytes](const std::filesystem::path& file) { writeFile(file, bytes); };
    };
    std::unique_ptr<Database> locker;
    const Case cases[]{
        {"sound", execute("SELECT 1"), "works", "takes rows", ""},
        {"no database", replace(std::string(8192, 'x')), "broken", "is damaged", "restore it from a backup"},
        {"a wrong page",
            [](const std::filesystem::path& file) {
                std::string bytes = readFile(file);
                bytes.replace(4096, 2048, std::string(2048, 'x'));
                writeFile(file, bytes);
            },
            "broken", "is damaged", "restore it from a backup"},
        {"empty", replace(""), "works", "brought up to date at the next call", ""},
        {"older", execute("DROP TABLE feedback; DELETE FROM grdb_migrations WHERE identifier LIKE 'feedback%'"),
            "works", "brought up to date at the next call", ""},
        {"of another program",
            execute("DROP TABLE feedback; CREATE TABLE feedback (x);"
                    "DELETE FROM grdb_migrations WHERE identifier LIKE 'feedback%'"),
            "broken", "tables that are not this program's", "Move it away"},
        {"locked", execute("SELECT 1"), "broken", "another program holds", "Try again, or end that program"},
        {"open to others",
            [](const std::filesystem::path& file) { std::filesystem::permissions(file, std::filesystem::perms(0644)); },
            "limited", "other users may open it", "chmod 600"},
        {"a folder",
            [](const std::filesystem::path& file) {
                std::filesystem::remove(file);
                std::filesystem::create_directory(file);
            },
            "broken", "is no file", "Move it away"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        std::filesystem::remove_all(home());
        ASSERT_EQ(mervo(send()).status, 0);
        const auto file = home() / "mervo.sqlite";
        c.harm(file);
        const auto before = std::filesystem::is_directory(file) ? std::string() : readFile(file);
        const auto names = tree(home());
        if (c.name == std::string("locked")) { // after the reading: to close a file gives up all locks on it
            locker = std::make_unique<Database>(file);
            locker->execute("BEGIN IMMEDIATE");
        }
        const json found = check("database");
        locker.reset();
        EXPECT_EQ(found["state"], c.state) << found;
        EXPECT_THAT(found["detail"].get<std::string>(), HasSubstr(c.detail));
        EXPECT_THAT(found["remedy"].get<std::string>(), HasSubstr(c.remedy));
        EXPECT_EQ(found["exit"], std::string(c.state) == "broken" ? 1 : 0);
        EXPECT_EQ(tree(home()), names);
        EXPECT_TRUE(std::filesystem::is_directory(file) || readFile(file) == before);
    }
}

TEST_F(DoctorTest, namesWhatBelongsToSomebodyElse)
{
    if (::geteuid() != 0)
        return; // only root can give files away; a skipped test would fail the run of everybody else
    setMode("copilote");
    ASSERT_EQ(mervo(send()).status, 0);
    ASSERT_EQ(::chown((home() / "mervo.sqlite").c_str(), 1, 1), 0);
    expect("home", "broken", "mervo.sqlite belongs to another user");
    expect("database", "broken", "belongs to another user");
}

TEST_F(DoctorTest, namesTheSettingsThatDoNotCount)
{
    struct Case {
        const char* json;
        const char* state;
        const char* detail;
    };
    const Case cases[]{
        {R"({"autonomyMode":"panic","imapAccounts":[],"dailyMutationCap":0,"notifyEmail":"a@b","askChannel":"x"})",
            "works", "in order"},
        {R"({"yoloMode":true,"terminalApp":null,"rondelHome":"/x","notifyIMessageHandle":"+1"})", "works", "in order"},
        {R"({"imapAccounts":[{"mailAccountName":"a","email":"b","host":"c","port":993,"note":"mine"}]})", "works", ""},
        {R"({"autonomyMode":"turbo"})", "broken",
            "autonomyMode has a value that cannot be used; it counts as \"copilote\""},
        {R"({"dailyMutationCap":"5"})", "broken", "dailyMutationCap has a value that cannot be used; it counts as 100"},
        {R"({"imapAccounts":[{"email":"b"}]})", "broken", "imapAccounts has a value that cannot be used"},
        {R"({"terminalApp":5})", "broken", "terminalApp has a value that cannot be used; it counts as nothing"},
        {R"({"notifyMail":"a@b"})", "limited", "notifyMail is not known"},
        {R"([])", "broken", "is no JSON object"},
        {R"({"autonomyMode":"panic",})", "broken", "is no JSON object"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.json);
        writeFile(home() / "config.json", c.json);
        std::filesystem::permissions(home(), std::filesystem::perms::owner_all);
        expect("config", c.state, c.detail);
    }
}

TEST_F(DoctorTest, saysWhetherQuestionsReachTheOwner)
{
    expect("asking", "limited", "no address of yours to mail them to");
    writeFile(home() / "config.json", R"({"askChannel":"cockpit"})");
    expect("asking", "works", "the channel is Cockpit; 0 without an answer");
    writeFile(home() / "config.json", R"({"notifyEmail":"a@b"})");
    expect("asking", "works", "the channel is Mail (reply); 0 without an answer");
    ASSERT_EQ(mervo({"run", "ask", "text=Well?"}).status, 0);
    expect("asking", "limited", "1 without an answer\nno automation runs ask.harvest");
    writeFile(home() / "automations" / "h" / "loop.json", R"({"name":"h","command":"'mervo' run ask.harvest"})");
    expect("asking", "works", "1 without an answer");
}

TEST_F(DoctorTest, namesTheMissingParts)
{
    answer = "something else";
    expect("scripts", "broken", "its answer was \"something else\"");
    answer = "ready";
    std::filesystem::remove(contents() / "Resources" / "MervoCore_MervoCore.bundle" / "user-guide.md");
    expect("guides", "limited", "user-guide.md");
    std::filesystem::remove(contents() / "Helpers" / "mervo-mcp");
    expect("agents", "broken", "mervo-mcp is not there");
}

TEST_F(DoctorTest, passesOnWhatTheApplicationsSayAndSurvivesNonsense)
{
    writeProgram("desk-health",
        "#!/bin/sh\necho '[{\"id\":\"mail\",\"label\":\"Mail\",\"ok\":false,\"detail\":\"a bad \\u001b file\","
        "\"remedy\":\"Move it.\"}]'\nexit 1\n");
    expect("mail", "broken", "a bad \x1b file");
    EXPECT_THAT(mervo({"doctor"}, {{"SCRIPT_ANSWER", "ready"}}).out,
        HasSubstr("BROKEN   Mail: a bad <U+001B> file\n         > Move it.\n"));
    for (const std::string text : {"echo nonsense", "echo '{}'", "echo '[{\"id\":5}]'", "kill -9 $$", "echo '[1]'"}) {
        writeProgram("desk-health", "#!/bin/sh\n" + text + "\n");
        expect("applications", "broken", "could not be asked");
    }
    std::filesystem::remove(contents() / "Helpers" / "platform" / "desk-health");
    expect("applications", "broken", "No such file or directory");
}

} // namespace mervo::test
