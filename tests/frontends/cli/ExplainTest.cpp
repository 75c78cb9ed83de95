#include "tests/frontends/cli/Cli.h"

#include <nlohmann/json.hpp>

namespace mervo::test {

using nlohmann::json;
using testing::HasSubstr;
using enum PolicyRule::Decision;

std::vector<std::string> asked(std::vector<std::string> words)
{
    words.front() = "explain";
    return words;
}

class ExplainTest : public Cli {
protected:
    std::string said(const std::vector<std::string>& call) const
    {
        auto words = asked(call);
        words.push_back("--json");
        return json::parse(mervo(words).out)["verdict"];
    }
    /// What a run of the same call came to, by the trail that it left.
    std::string done(const std::vector<std::string>& call) const
    {
        const std::size_t before = audit().size();
        mervo(call);
        const auto rows = audit();
        if (rows.size() == before)
            return "refused";
        return rows[0].outcome == "denied" ? "deny" : rows[0].outcome == "pending_approval" ? "ask" : "auto";
    }
};

TEST_F(ExplainTest, saysWhatRunThenDoes)
{
    const std::vector<std::vector<PolicyRule>> ruleSets{{}, {rule("DENY0001", deny, "*")},
        {rule("ALLOW001", allow, "*")}, {rule("ASK00001", ask, "*")},
        {rule("ASK00001", ask, "*"), rule("ALLOW001", allow, "*", {{"name", "x"}, {"to", "ada"}})}};
    const std::vector<std::vector<std::string>> calls{
        {"run", "mail.accounts"}, {"run", "auto.enable", "name=x"}, send(), {"run", "mail.send", "to=only"}};
    for (const auto& rules : ruleSets) {
        std::filesystem::remove_all(home());
        addRules(rules);
        for (const std::string mode : {"panic", "copilote", "yolo"}) {
            for (const int cap : {0, 100}) {
                setMode(mode, cap);
                for (const auto& call : calls)
                    EXPECT_EQ(said(call), done(call)) << mode << cap << call[1];
            }
        }
    }
}

TEST_F(ExplainTest, saysWhatHasNoEffectAndWhatTheCallWouldActOn)
{
    const Environment counted{{"SCRIPT_ANSWER", "77|2048"}};
    const std::vector<std::string> call{
        "explain", "mail.delete", "account=Work", "mailbox=INBOX", "status=raed", "--json"};
    json object = json::parse(mervo(call, counted).out);
    EXPECT_EQ(object["preview"], "77 message(s), 2.0 MB");
    EXPECT_EQ(object["remarks"], json::array({"status=\"raed\" is not unread or read, so it filters nothing"}));
    const std::vector<std::string> words(call.begin(), call.end() - 1);
    EXPECT_THAT(mervo(words, counted).out,
        HasSubstr(
            "Preview: 77 message(s), 2.0 MB\nNote: status=\"raed\" is not unread or read, so it filters nothing\n"));
    EXPECT_FALSE(std::filesystem::exists(home()));
    EXPECT_THAT(
        mervo({"explain", "mail.delete", "olderthan=3"}).out, HasSubstr("\nNote: mail.delete ignores olderthan"));

    addRules({rule("DENY0001", deny, "mail.*")});
    object = json::parse(mervo(call, counted).out);
    EXPECT_FALSE(object.contains("preview")) << "a deny rule keeps from counting too";
}

TEST_F(ExplainTest, tellsOfEveryRuleWhyItWonOrLost)
{
    PolicyRule off = rule("OFF00001", deny, "*", {}, "2026-01-09T00:00:00Z");
    off.enabled = false;
    PolicyRule account = rule("ACCT0001", deny, "mail.*", {}, "2026-01-08T00:00:00Z");
    account.account = "Work";
    setMode("copilote");
    addRules({off, account, rule("OTHER001", deny, "note.*", {}, "2026-01-07T00:00:00Z"),
        rule("NOARG001", deny, "mail.*", {{"cc", "x"}}, "2026-01-06T00:00:00Z"),
        rule("TEXT0001", deny, "mail.*", {{"to", "bob"}}, "2026-01-05T00:00:00Z"),
        rule("WINS0001", allow, "mail.send", {{"to", "ADA"}}, "2026-01-04T00:00:00Z"),
        rule("TIED0001", ask, "mail.*", {{"subject", "Hello"}}, "2026-01-03T00:00:00Z"),
        rule("WIDE0001", ask, "*", {}, "2026-01-02T00:00:00Z")});
    const std::string out = mervo(asked(send())).out;
    EXPECT_THAT(out, testing::StartsWith("mail.send would run at once.\nReason: rule_allow:WINS0001\n"));
    const std::pair<const char*, const char*> expected[]{
        {"OFF00001  deny *", "does not apply: it is switched off"},
        {"ACCT0001  deny mail.* where account is \"Work\"", "does not apply: the call names no account"},
        {"OTHER001  deny note.*", "does not apply: mail.send is none of the tools \"note.*\""},
        {"NOARG001  deny mail.* where cc contains \"x\"", "does not apply: the call has no argument \"cc\""},
        {"TEXT0001  deny mail.* where to contains \"bob\"",
            "does not apply: the argument \"to\" is \"ada@example.org\", which does not contain \"bob\""},
        {"WINS0001  allow mail.send where to contains \"ADA\"", "settles it: of the allow and ask rules that match"},
        {"TIED0001  ask mail.* where subject contains \"Hello\"",
            "matches and loses: rule WINS0001 is as specific and newer"},
        {"WIDE0001  ask *", "matches and loses: rule WINS0001 is more specific (2 against 0)"},
    };
    for (const auto& [head, why] : expected)
        EXPECT_THAT(out, HasSubstr(std::string("  ") + head + "\n      " + why));
}

TEST_F(ExplainTest, namesThePowerThatStandsAboveARule)
{
    struct Case {
        const char* mode;
        int cap;
        std::vector<PolicyRule> rules;
        std::vector<std::string> words;
        const char* why;
    };
    const auto allowAll = rule("ALLOW001", allow, "*");
    const Case cases[]{
        {"copilote", 100, {allowAll, rule("DENY0001", deny, "*")}, send(),
            "matches and loses: rule DENY0001 denies, and deny always wins"},
        {"copilote", 0, {allowAll}, send(), "settles it, but 0 of the day's 0 unattended actions have run"},
        {"panic", 100, {allowAll}, send(), "matches and has no power: in panic every change waits"},
        {"yolo", 100, {allowAll}, send(), "matches and has no power: in yolo everything runs"},
        {"copilote", 100, {allowAll}, {"run", "mail.accounts"}, "matches and has no power: a read runs"},
    };
    for (const Case& c : cases) {
        std::filesystem::remove_all(home());
        setMode(c.mode, c.cap);
        addRules(c.rules);
        EXPECT_THAT(mervo(asked(c.words)).out, HasSubstr(c.why));
    }
}

TEST_F(ExplainTest, aCallThatTheToolRefusesHasNoVerdict)
{
    const Ended run = mervo({"explain", "mail.send", "to=a"});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.out,
        "mail.send would be refused by the tool itself, whatever the level and the rules: "
        "missing required argument: subject\n");
}

TEST_F(ExplainTest, textFromOutsideIsVisibleAndCut)
{
    setMode("copilote");
    addRules({rule("A\x1b[2J", allow, "mail.\u202e*", {{"to", "x"}}), rule("B", ask, "mail.*", {{"to", "x"}})});
    const std::string out = mervo({"explain", "mail.send", "to=" + std::string(500, 'y'), "subject=b", "body=c"}).out;
    EXPECT_THAT(out, HasSubstr("A<U+001B>[2J  allow mail.<U+202E>*"));
    EXPECT_THAT(out, HasSubstr("y...\" (500 characters), which does not contain \"x\""));
}

} // namespace mervo::test
