#include "tests/frontends/cli/Cli.h"

#include <algorithm>
#include <nlohmann/json.hpp>

namespace mervo::test {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::MatchesRegex;
using testing::StartsWith;

using RunTest = Cli;

TEST_F(RunTest, executedTextEndsInOneLineFeed)
{
    for (const std::string_view guide : {"one\ntwo\n", "one", "one\n\n"}) {
        writeFile(contents() / "Resources" / "MervoCore_MervoCore.bundle" / "llm-guide.md", guide);
        const Ended run = mervo({"run", "how_it_works"});
        EXPECT_EQ(run.status, 0);
        EXPECT_EQ(run.out, guide.ends_with('\n') ? std::string(guide) : std::string(guide) + "\n");
        EXPECT_EQ(run.err, "");
    }
    EXPECT_EQ(mervo({"run", "mail.accounts"}, {{"SCRIPT_ANSWER", ""}}).out, "\n");
    ASSERT_EQ(audit().size(), 4U);
    EXPECT_EQ(audit()[0].actor, "cli");
    EXPECT_EQ(audit()[0].outcome, "executed");
}

TEST_F(RunTest, whatWaitsIsToldWithItsPreview)
{
    const Ended plain = mervo(send());
    EXPECT_EQ(plain.status, 0);
    EXPECT_THAT(plain.out, MatchesRegex("pending [0-9A-F]{8}\n"));
    ASSERT_EQ(pending().size(), 1U);
    EXPECT_EQ(plain.out, "pending " + pending()[0].id + "\n");

    const Environment two{{"SCRIPT_ANSWER", "2|2048"}};
    const std::vector<std::string> bulk{
        "run", "mail.move", "account=Work", "mailbox=INBOX", "from=a", "dest=Old\x1b[2J\nerror: no"};
    const Ended previewed = mervo(bulk, two);
    EXPECT_EQ(previewed.status, 0);
    EXPECT_THAT(previewed.out,
        MatchesRegex("pending [0-9A-F]{8}\n2 message\\(s\\), 2\\.0 MB → Old<U\\+001B>\\[2J<U\\+000A>error: no\n"));

    auto withJson = bulk;
    withJson.push_back("--json");
    const auto object = nlohmann::ordered_json::parse(mervo(withJson, two).out);
    std::vector<std::string> keys;
    for (const auto& [key, value] : object.items())
        keys.push_back(key);
    EXPECT_THAT(keys, ElementsAre("outcome", "id", "preview"));
    const auto waiting = pending();
    const auto queued = std::ranges::find(waiting, object["id"].get<std::string>(), &PendingAction::id);
    ASSERT_NE(queued, waiting.end());
    EXPECT_EQ(object["preview"], queued->preview.value_or(""));
}

TEST_F(RunTest, whatDoesNotRunAndDoesNotWaitIsAnError)
{
    using enum PolicyRule::Decision;
    struct Case {
        PolicyRule rule;
        std::vector<std::string> words;
        const char* error;
    };
    const Case cases[]{
        {rule("DENY0001", deny, "mail.*"), {"run", "mail.accounts"}, "blocked by deny-rule (DENY0001)"},
        {rule("ALLOW001", allow, "auto.rm"), {"run", "auto.rm", "name=x"}, "no automation named 'x' (see auto.list)"},
        {rule("ALLOW001", allow, "*"), {"run", "mail.send", "to=a"}, "missing required argument: subject"},
    };
    for (const auto& [rule, words, error] : cases) {
        std::filesystem::remove_all(home());
        addRules({rule});
        const Ended run = mervo(words);
        EXPECT_EQ(run.status, 1) << error;
        EXPECT_EQ(run.out, "");
        EXPECT_EQ(run.err, std::string("error: ") + error + "\n");
        EXPECT_TRUE(pending().empty());
    }
}

TEST_F(RunTest, wrongUsageIsRefusedAndLeavesNothingBehind)
{
    struct Case {
        std::vector<std::string> words;
        std::string error;
    };
    const Case cases[]{
        {{"run"}, "no tool was named"},
        {{"run", "mail.serch"}, "there is no tool \"mail.serch\"; did you mean mail.search"},
        {{"run", "MAIL.SEARCH", "from=x"}, "there is no tool \"MAIL.SEARCH\"; did you mean mail.search"},
        {{"run", "mail.send", "hello"}, "\"hello\" is no key=value word"},
        {{"run", "mail.send", "=x"}, "\"=x\" names no argument before \"=\""},
        {{"run", "mail.send", "to=a", "to=b"}, "to is given twice"},
        {{"run", "mail.send", "body=a", "body-file=/dev/null"}, "body and body-file are given both; give one"},
        {{"run", "mail.send", "body-file=a", "body-file=b"}, "body-file is given twice"},
        {{"run", "mail.send", "subject=\xff"}, "the value of subject is not valid UTF-8"},
        {{"run", "mail.send", "\xc3\x28=x"}, "the argument name \"<0xC3>(\" is not valid UTF-8"},
        {{"run", "mail.send", "--jsn"}, "\"--jsn\" is no option of \"mervo run\""},
        {{"run", "mail.send", "-x=y"}, "\"-x=y\" is no option of \"mervo run\""},
        {{"run", "mail.send", "--", "--json"}, "\"--json\" is no key=value word"},
        {{"run", "a\x1b[31m\nerror: fine"}, "there is no tool \"a<U+001B>[31m<U+000A>error: fine\""},
    };
    for (const Case& c : cases) {
        const Ended run = mervo(c.words);
        EXPECT_EQ(run.status, 2) << c.error;
        EXPECT_EQ(run.out, "");
        EXPECT_THAT(run.err, StartsWith("error: " + c.error));
    }
    EXPECT_FALSE(std::filesystem::exists(home()));
}

TEST_F(RunTest, valuesArriveAsTheyStand)
{
    const std::vector<std::string> values{"", "=", "a=b=c", "-x", "--json", "--", "$(touch x) `id` \"'\\", "a\nb\tc",
        "caf\u00e9 \u202e", "[a,b]", "{}", "@file", "%s %n", std::string(100'000, 'x')};
    for (const std::string& value : values)
        ASSERT_EQ(mervo(send({"attachments=" + value})).status, 0) << value;
    std::vector<std::string> arrived;
    for (const PendingAction& action : pending())
        arrived.push_back(action.args.at("attachments"));
    EXPECT_THAT(arrived, testing::UnorderedElementsAreArray(values));
}

TEST_F(RunTest, optionsStandAnywhereBeforeTheDoubleDash)
{
    for (const std::vector<std::string>& words : {std::vector<std::string>{"run", "--json", "how_it_works"},
             {"run", "how_it_works", "x=y", "--json"}, {"run", "how_it_works", "--json", "--", "-x=--json"}}) {
        const Ended run = mervo(words);
        EXPECT_EQ(run.status, 0);
        EXPECT_THAT(run.out, StartsWith("{\"outcome\":\"executed\",\"output\":\""));
    }
}

TEST_F(RunTest, aBodyComesFromAFileOrStandardInput)
{
    const std::vector<std::string> draft{"run", "mail.send", "to=a", "subject=b"};
    const auto with = [&](const std::string& word) {
        auto words = draft;
        words.push_back(word);
        return words;
    };
    writeFile(folder() / "body.txt", "first\n=second\n");
    EXPECT_EQ(mervo(with("body-file=" + (folder() / "body.txt").string())).status, 0);
    EXPECT_EQ(mervo(with("body-file=-"), {}, "from input\n").status, 0);
    EXPECT_EQ(shell("\"$0\" run mail.send to=a subject=b body-file=<(printf piped)").status, 0);
    std::vector<std::string> bodies;
    for (const PendingAction& action : pending()) {
        bodies.push_back(action.args.at("body"));
        EXPECT_FALSE(action.args.contains("body-file"));
    }
    EXPECT_THAT(bodies, testing::UnorderedElementsAre("first\n=second\n", "from input\n", "piped"));
}

TEST_F(RunTest, aBodyThatIsNoTextIsAnErrorBeforeTheGate)
{
    writeFile(folder() / "bytes", "\xff\xfe");
    writeFile(folder() / "zero", std::string("a\0b", 3));
    const std::pair<std::string, std::string> cases[]{
        {(folder() / "none").string(), "cannot be read: No such file or directory\n"},
        {folder().string(), "cannot be read: Is a directory\n"},
        {(folder() / "bytes").string(), "is no text: its bytes are not valid UTF-8\n"},
        {(folder() / "zero").string(), "is no text: it holds a zero byte\n"},
        {"/dev/zero", "is longer than 16 MiB\n"},
    };
    for (const auto& [path, reason] : cases) {
        const Ended run = mervo({"run", "mail.send", "to=a", "subject=b", "body-file=" + path});
        EXPECT_EQ(run.status, 1);
        EXPECT_EQ(run.err, "error: the file \"" + path + "\" " + reason);
    }
    EXPECT_EQ(shell("\"$0\" run mail.send to=a subject=b body-file=- <&-").err,
        "error: standard input cannot be read: Bad file descriptor\n");
    EXPECT_FALSE(std::filesystem::exists(home()));
}

TEST_F(RunTest, everyOutcomeHasItsObject)
{
    const Environment hostile{{"SCRIPT_ANSWER", "a\"\n\u00e9\x1b[2J\u202eb\u009bc\u200bd"}};
    EXPECT_EQ(mervo({"run", "mail.accounts", "--json"}, hostile).out,
        "{\"outcome\":\"executed\",\"output\":\"a\\\"\\n\u00e9\\u001b[2J\\u202eb\\u009bc\\u200bd\"}\n");
    EXPECT_THAT(mervo(send({"--json"})).out, MatchesRegex("\\{\"outcome\":\"pending\",\"id\":\"[0-9A-F]{8}\"\\}\n"));

    const Ended refused = mervo({"run", "mail.send", "--json"});
    EXPECT_EQ(refused.status, 1);
    EXPECT_EQ(refused.out, "{\"outcome\":\"error\",\"error\":\"missing required argument: to\"}\n");
    EXPECT_EQ(refused.err, "");

    const Ended wrong = mervo({"run", "nothing.like_it_at_all", "--json"});
    EXPECT_EQ(wrong.status, 2);
    EXPECT_EQ(wrong.out, "{\"outcome\":\"error\",\"error\":\"there is no tool \\\"nothing.like_it_at_all\\\"\"}\n");
    EXPECT_THAT(wrong.err, StartsWith("error: "));
}

TEST_F(RunTest, remarksAreNotesOnStandardErrorAndMembersOfTheObject)
{
    const Environment work{{"SCRIPT_ANSWER", "Work"}};
    const Ended run = mervo({"run", "mail.accounts", "colour=\x1b[1m", "b\nad=1"}, work);
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.out, "Work\n");
    EXPECT_EQ(run.err, "note: mail.accounts ignores b<U+000A>ad\nnote: mail.accounts ignores colour\n");
    EXPECT_EQ(mervo(send({"subjetc=x"})).err, "note: mail.send ignores subjetc; did you mean subject?\n");
    EXPECT_EQ(mervo({"run", "mail.delete", "olderthan=3"}).err.substr(0, 61),
        "note: mail.delete ignores olderthan; did you mean olderThan?\n");
    const auto object = nlohmann::json::parse(mervo({"run", "mail.accounts", "x=1", "--json"}, work).out);
    EXPECT_EQ(object["remarks"], nlohmann::json::array({"mail.accounts ignores x"}));
}

TEST_F(RunTest, theActorIsTheAutomationInsideItsRun)
{
    mervo({"run", "how_it_works"}, {{"RONDEL_RUN", "morning"}});
    mervo({"run", "how_it_works"}, {{"RONDEL_RUN", ""}});
    mervo({"run", "how_it_works"}, {{"RONDEL_RUN", "\x1b\n"}});
    mervo({"autonomy", "panic"}, {{"RONDEL_RUN", "odd \xff name\x1b[2J\n\u202e" + std::string(100, 'x')}});
    std::vector<std::string> actors;
    for (const AuditEntry& entry : audit())
        actors.push_back(entry.actor);
    EXPECT_THAT(actors,
        ElementsAre("auto:odd \uFFFD name[2J<U+202E>" + std::string(50, 'x'), "auto:unknown", "cli", "auto:morning"));
}

} // namespace mervo::test
