#include "core/policy/HarnessRunner.h"

#include "core/foundation/ConfigDir.h"
#include "core/foundation/HarnessConfig.h"
#include "core/foundation/ServiceError.h"
#include "core/foundation/Timestamps.h"
#include "core/policy/PendingStore.h"
#include "tests/support/Files.h"
#include "tests/support/SmallFiles.h"

#include <gtest/gtest.h>
#include <stdlib.h>

namespace mervo {
namespace {

namespace fs = std::filesystem;
using HarnessRunner::Error;
using HarnessRunner::Executed;
using HarnessRunner::Pending;

/// A home of its own with real files, and a tool whose every closure is seen.
class Gate : public testing::Test {
protected:
    Gate()
    {
        ::setenv("MERVO_HOME", home.c_str(), 1);
        tool.id = "mail.send";
        tool.effect = Effect::destructive;
        tool.build = [this](const Args& args) -> Invocation {
            calls += "b";
            if (args.count("to") == 0)
                throw ToolError::missingArg("to");
            return {};
        };
        tool.nativeRun = [this](const Args&) {
            calls += "r";
            return output;
        };
    }

    void open()
    {
        db = std::make_shared<MervoDB>();
        rules.emplace(db);
        audit.emplace(db);
    }
    HarnessRunner::Result run(const Args& args = {{"to", "a@b"}})
    {
        if (!db)
            open();
        return HarnessRunner::run(tool, args, "cli", home, {*rules, *audit});
    }
    std::string error(const Args& args = {{"to", "a@b"}}) { return std::get<Error>(run(args)).text; }
    std::vector<PendingAction> queue() const { return PendingStore::listExisting(home); }
    AuditEntry row()
    {
        const auto rows = audit->recent(2);
        EXPECT_EQ(rows.size(), 1U);
        return rows.empty() ? AuditEntry{} : rows.front();
    }
    void mode(AutonomyMode wanted)
    {
        HarnessConfig config = HarnessConfig::load();
        config.autonomyMode = wanted;
        ASSERT_TRUE(config.save());
    }
    void addRule(std::string id, PolicyRule::Decision decision)
    {
        if (!db)
            open();
        rules->add({std::move(id), true, {}, "*", {}, decision, PolicyRule::Source::user, "2026-01-01T00:00:00Z"});
    }
    /// So many actions that an allow rule let run today, in one transaction.
    void addRuns(int count)
    {
        db->database()
            .prepare("WITH RECURSIVE n(i) AS (SELECT 1 WHERE ?1 > 0 UNION ALL SELECT i + 1 FROM n WHERE i < ?1) "
                     "INSERT INTO audit (timestamp, actor, action, outcome, reason, details) "
                     "SELECT ?2, 'cli', 'x', 'executed', 'rule_allow:A', '{}' FROM n")
            .bind(count)
            .bind(Timestamps::now())
            .run();
    }
    AuditEntry expected(std::string outcome, std::string reason, AuditLog::Details details = {{"to", "a@b"}})
    {
        return {row().timestamp, "cli", "mail.send", {}, std::move(details), std::move(outcome), std::move(reason)};
    }

    test::TempDir dir;
    fs::path home = dir / "home";
    Tool tool;
    std::string output = " done \n";
    std::string calls; ///< b: build, p: preview, r: run, t: transform, a: auditAutoRun
    std::shared_ptr<MervoDB> db;
    std::optional<RuleStore> rules;
    std::optional<AuditLog> audit;
};

TEST_F(Gate, refusedArgumentsLeaveNoTraceInAnyMode)
{
    for (const AutonomyMode wanted : kAllAutonomyModes) {
        HarnessConfig config;
        config.autonomyMode = wanted;
        test::writeFile(home / "config.json", config.encode());
        const auto result = HarnessRunner::run(tool, {{"cc", "x"}}, "cli", home);
        EXPECT_EQ(std::get<Error>(result).text, "missing required argument: to");
        EXPECT_EQ(test::tree(home), std::set<std::string>{"config.json"}) << "not even a database";
    }
    tool.build = [](const Args&) -> Invocation { throw 7; };
    EXPECT_EQ(error(), "the tool failed without saying why");
}

TEST_F(Gate, takes16MiBOfArgumentsAndNotAByteMore)
{
    Args args{{"to", "a"}, {"body", std::string(kMostArgumentBytes - 7, '\n')}};
    ASSERT_TRUE(std::holds_alternative<Pending>(run(args)));
    EXPECT_EQ(queue().at(0).args, args);
    EXPECT_EQ(row().details, args);
    calls.clear();
    args["to"] += "b";
    EXPECT_EQ(error(args),
        "the arguments hold 16777217 bytes, names and values together, and one call holds at most 16777216 (16 MiB); "
        "shorten them, or send them in parts");
    EXPECT_EQ(calls, "") << "the tool is not asked";
    EXPECT_EQ(queue().size(), 1U);
    EXPECT_EQ(audit->count(), 1);
}

TEST_F(Gate, remarksStandBesideEveryResultAndChangeNone)
{
    open();
    tool.arguments = {required("to", "")};
    tool.remarks = [](const Args&) -> std::vector<Remark> { throw ServiceError("no remark"); };
    tool.omissions = [](const std::string& raw) { return std::vector{"cut from" + raw}; };
    tool.transform = [](const std::string&) { return "short"; };
    const auto heard = [&](AutonomyMode wanted, const Args& args) {
        mode(wanted);
        std::string trace[2];
        Notices notices;
        for (const bool asked : {false, true}) {
            calls.clear();
            const auto result =
                HarnessRunner::run(tool, args, "cli", home, {*rules, *audit}, asked ? &notices : nullptr);
            trace[asked ? 1 : 0] =
                calls + std::to_string(result.index()) + (result.index() == 0 ? std::get<Executed>(result).output : "");
        }
        EXPECT_EQ(trace[0], trace[1]);
        return notices.remarks;
    };
    using Sentences = std::vector<std::string>;
    const std::string ignored = "mail.send ignores cc";
    EXPECT_EQ(heard(AutonomyMode::panic, {{"cc", "x"}}), Sentences{ignored}) << "refused";
    EXPECT_EQ(heard(AutonomyMode::panic, {{"cc", "x"}, {"to", "a"}}), Sentences{ignored}) << "queued";
    EXPECT_EQ(heard(AutonomyMode::yolo, {{"cc", "x"}, {"to", "a"}}), (Sentences{ignored, "cut from done \n"}));
    EXPECT_EQ(heard(AutonomyMode::yolo, {{"to", "a"}}), Sentences{"cut from done \n"});
    addRule("D1", PolicyRule::Decision::deny);
    EXPECT_EQ(heard(AutonomyMode::yolo, {{"cc", "x"}, {"to", "a"}}), Sentences{ignored}) << "denied";
}

TEST_F(Gate, askingQueuesTheCallAsItStands)
{
    tool.preview = [this](const Args&) {
        calls += "p";
        return std::optional<std::string>("2 messages");
    };
    const Args args{{"to", "a@b"}, {"to-all", "1"}, {"impact", "mine"}};
    const auto result = std::get<Pending>(run(args));
    EXPECT_EQ(calls, "bp");
    EXPECT_EQ(result.preview, "2 messages");
    ASSERT_EQ(queue().size(), 1U);
    const PendingAction queued = queue().front();
    EXPECT_EQ(queued.id, result.id);
    EXPECT_EQ(result.id.size(), 8U);
    EXPECT_EQ(result.id.find_first_not_of("0123456789ABCDEF"), std::string::npos);
    EXPECT_EQ(test::readFile(home / "pending" / (result.id + ".json")),
        R"({"id":")" + result.id + R"(","tool":"mail.send","args":{"impact":"mine","to":"a@b","to-all":"1"},)"
            + R"("summary":"mail.send impact=mine to-all=1 to=a@b","createdAt":")" + queued.createdAt
            + R"(","preview":"2 messages"})");
    AuditLog::Details details(args.begin(), args.end());
    details["impact"] = "2 messages";
    EXPECT_EQ(row(), expected("pending_approval", "needs_approval", details));

    tool.build = [](const Args&) { return Invocation{}; };
    tool.preview = [](const Args&) -> std::optional<std::string> { throw std::runtime_error("x"); };
    fs::remove_all(home / "pending");
    EXPECT_EQ(std::get<Pending>(run({})).preview, std::nullopt) << "one that fails is none";
    const PendingAction bare = queue().at(0);
    EXPECT_EQ(test::readFile(home / "pending" / (bare.id + ".json")),
        R"({"id":")" + bare.id + R"(","tool":"mail.send","args":{},"summary":"mail.send ","createdAt":")"
            + bare.createdAt + R"("})")
        << "without arguments the summary ends in a blank";
    EXPECT_EQ(audit->recent(1).at(0).details, AuditLog::Details{}) << "no preview, no impact";
}

TEST_F(Gate, everyVerdictHasItsDeedAndItsRow)
{
    using enum AutonomyMode;
    using enum PolicyRule::Decision;
    struct Case {
        const char* what;
        AutonomyMode mode;
        Effect effect;
        std::optional<PolicyRule::Decision> rule;
        int runs; ///< of allow rules today
        const char* outcome;
        const char* reason;
    };
    const Case cases[]{
        {"panic", panic, Effect::create, {}, 0, "pending_approval", "needs_approval"},
        {"panic over allow", panic, Effect::destructive, allow, 0, "pending_approval", "needs_approval"},
        {"copilote", copilote, Effect::destructive, {}, 0, "pending_approval", "needs_approval"},
        {"an ask rule", copilote, Effect::destructive, ask, 0, "pending_approval", "rule_ask:A"},
        {"the cap", copilote, Effect::destructive, allow, 100, "pending_approval", "cap_reached"},
        {"below the cap", copilote, Effect::destructive, allow, 99, "executed", "rule_allow:A"},
        {"no rule, no cap", copilote, Effect::create, {}, 100, "executed", "policy_copilote"},
        {"a read with an ask rule", panic, Effect::read, ask, 0, "executed", "read"},
        {"yolo with an ask rule", yolo, Effect::destructive, ask, 0, "executed", "yolo_auto"},
        {"a deny rule over a read", panic, Effect::read, deny, 0, "denied", "rule_deny:A"},
        {"a deny rule over yolo", yolo, Effect::destructive, deny, 0, "denied", "rule_deny:A"},
    };
    open();
    const Args args{{"to", "a@b"}, {"result", "mine"}};
    for (const auto& [what, wanted, effect, rule, runs, outcome, reason] : cases) {
        SCOPED_TRACE(what);
        db->database().execute("DELETE FROM audit; DELETE FROM policy_rules");
        fs::remove_all(home / "pending");
        mode(wanted);
        tool.effect = effect;
        if (rule)
            addRule("A", *rule);
        addRuns(runs);
        calls.clear();
        const auto result = run(args);
        AuditLog::Details details = args;
        if (outcome == std::string("executed")) {
            EXPECT_EQ(std::get<Executed>(result).output, " done \n");
            details["result"] = "done";
        }
        if (outcome == std::string("denied")) {
            EXPECT_EQ(std::get<Error>(result).text, "blocked by deny-rule (A)");
        }
        EXPECT_EQ(calls, outcome == std::string("executed") ? "br" : "b");
        EXPECT_EQ(queue().size(), outcome == std::string("pending_approval") ? 1U : 0U);
        const AuditEntry row = audit->recent(1).at(0);
        EXPECT_EQ(row, (AuditEntry{row.timestamp, "cli", "mail.send", {}, details, outcome, reason}));
        EXPECT_EQ(audit->mutationsToday(), runs + (reason == std::string("rule_allow:A") ? 1 : 0));
    }
}

TEST_F(Gate, aFailedRunIsOnRecordAndDoesNotCount)
{
    addRule("A", PolicyRule::Decision::allow);
    tool.transform = [this](const std::string& text) {
        calls += "t";
        return text;
    };
    tool.auditAutoRun = [](const std::string&) { return false; };
    tool.nativeRun = [](const Args&) -> std::string { throw std::runtime_error("ambiguous: 2\n  a\n  b"); };
    EXPECT_EQ(error(), "ambiguous: 2\n  a\n  b");
    EXPECT_EQ(row(), expected("error", "ambiguous: 2\n  a\n  b"));
    EXPECT_EQ(calls, "b");
    EXPECT_EQ(audit->mutationsToday(), 0);
}

TEST_F(Gate, aRunMayBeKeptOutOfTheTrail)
{
    mode(AutonomyMode::yolo);
    tool.transform = [](const std::string& text) { return "[" + text + "]"; };
    tool.auditAutoRun = [this](const std::string& text) {
        EXPECT_EQ(text, "[" + output + "]");
        calls += "a";
        return false;
    };
    EXPECT_EQ(std::get<Executed>(run()).output, "[ done \n]");
    EXPECT_EQ(calls, "bra");
    EXPECT_EQ(audit->count(), 0);
    tool.auditAutoRun = [](const std::string&) -> bool { throw std::runtime_error("x"); };
    run();
    EXPECT_EQ(audit->count(), 1) << "in doubt, on record";
}

TEST_F(Gate, everySettingAppliesToTheNextCall)
{
    EXPECT_TRUE(std::holds_alternative<Pending>(run()));
    test::writeFile(home / "config.json", R"({"yoloMode":true})");
    EXPECT_TRUE(std::holds_alternative<Executed>(run()));
    EXPECT_EQ(test::readFile(home / "config.json"), R"({"yoloMode":true})") << "the gate only reads it";
    test::writeFile(home / "config.json", R"({"autonomyMode":"yo)");
    EXPECT_TRUE(std::holds_alternative<Pending>(run()));
}

TEST_F(Gate, worksWithoutADatabaseAndSaysWhatWasLost)
{
    const std::string file = "\"" + (home / "mervo.sqlite").string() + "\"";
    const std::string damaged = ": " + file + " is damaged; \"mervo doctor\" says what to do";
    const std::vector<std::string> unread{"the rules could not be read, and none applies" + damaged,
        "the day's count of unattended actions could not be read and counts as 0" + damaged};
    auto everything = unread;
    everything.push_back("the audit row could not be written" + damaged);
    test::writeFile(home / "mervo.sqlite", std::string(5000, 'x'));
    const auto call = [&] {
        Notices notices;
        const auto result =
            HarnessRunner::run(tool, {{"to", "x"}}, "cli", home, HarnessRunner::Stores::shared(), &notices);
        return std::pair(result, notices.warnings);
    };
    auto [waiting, warnings] = call();
    EXPECT_TRUE(std::holds_alternative<Pending>(waiting));
    EXPECT_EQ(warnings, everything);
    tool.effect = Effect::create;
    auto [done, again] = call();
    EXPECT_TRUE(std::holds_alternative<Executed>(done));
    EXPECT_EQ(again, everything);
    const auto explained = HarnessRunner::explain(tool, {{"to", "x"}});
    EXPECT_EQ((std::vector{explained.rulesUnread, explained.countUnread}), unread);

    fs::remove(home / "mervo.sqlite"); // and the process goes on with rules and a trail
    addRule("D", PolicyRule::Decision::deny);
    auto [refused, silence] = call();
    EXPECT_TRUE(std::holds_alternative<Error>(refused));
    EXPECT_TRUE(silence.empty());
    EXPECT_EQ(row().outcome, "denied");
}

TEST_F(Gate, whatCannotBeQueuedIsToldAndLeavesNothing)
{
    open();
    test::writeFile(home / "pending", "in the way");
    const std::string blocked = error();
    EXPECT_EQ(blocked.rfind("could not save pending: \"" + (home / "pending").string(), 0), 0U) << blocked;
    EXPECT_NE(blocked.find(".json\" could not be written: Not a directory"), std::string::npos) << blocked;
    fs::remove(home / "pending");
    EXPECT_EQ(error({{"to", "\xFF"}}),
        "could not save pending: the call holds a text that is not valid UTF-8, which the queue cannot keep");
    const std::string full = [&] {
        const test::SmallFiles limit(1 << 20);
        return error({{"to", std::string(2 << 20, 'x')}});
    }();
    EXPECT_NE(full.find("could not be written: File too large"), std::string::npos) << full;
    EXPECT_EQ(test::tree(home / "pending"), std::set<std::string>{}) << "no half file";
    EXPECT_EQ(audit->count(), 0);
}

TEST_F(Gate, textsThatAreNoUtf8OrLongStillLeaveARow)
{
    mode(AutonomyMode::yolo);
    output = "caf\xE9";
    EXPECT_EQ(std::get<Executed>(run()).output, output) << "the caller gets the bytes";
    EXPECT_EQ(row().details.at("result"), "caf\uFFFD");
    db->database().execute("DELETE FROM audit");
    run({{"to", "\xFF"}});
    EXPECT_EQ(row().details, AuditLog::Details{});
    EXPECT_EQ(row().outcome, "executed");
    db->database().execute("DELETE FROM audit");
    output = "\n " + std::string(499, 'x') + "e\u0301y";
    run();
    EXPECT_EQ(row().details.at("result"), std::string(499, 'x') + "e\u0301...") << "500 characters, whole ones";
}

TEST_F(Gate, explainingSeesWhatRunningWouldMeetAndCreatesNothing)
{
    auto found = HarnessRunner::explain(tool, {{"to", "x"}});
    EXPECT_EQ(found.outcome.reason, "policy_copilote");
    EXPECT_EQ(HarnessRunner::explain(tool, {}).refusal, "missing required argument: to");
    EXPECT_TRUE(test::tree(dir.path()).empty());

    addRule("A", PolicyRule::Decision::allow);
    addRuns(3);
    const auto before = test::readFile(home / "mervo.sqlite");
    found = HarnessRunner::explain(tool, {{"to", "x"}});
    EXPECT_EQ(found.refusal, std::nullopt);
    EXPECT_EQ(found.mutationsToday, 3);
    EXPECT_EQ(found.dailyCap, 100);
    EXPECT_EQ(found.outcome.reason, "rule_allow:A");
    ASSERT_EQ(found.trace.entries.size(), 1U);
    EXPECT_EQ(found.trace.entries[0].rule, &found.rules[0]);
    EXPECT_EQ(found.trace.entries[0].standing, ActionPolicy::Standing::won);
    EXPECT_EQ(test::readFile(home / "mervo.sqlite"), before);
    EXPECT_EQ(calls.find('r'), std::string::npos);
}

TEST_F(Gate, executeBuiltKnowsNoPolicy)
{
    addRule("D", PolicyRule::Decision::deny);
    tool.transform = [](const std::string& text) { return text + "!"; };
    const auto good = HarnessRunner::executeBuilt(tool, {});
    EXPECT_TRUE(good.ok);
    EXPECT_EQ(good.output + "|" + good.error, output + "!|");
    EXPECT_EQ(calls, "r") << "a native tool's build is not asked again";
    tool.transform = [](const std::string&) -> std::string { throw std::runtime_error("odd output"); };
    const auto bad = HarnessRunner::executeBuilt(tool, {});
    EXPECT_FALSE(bad.ok);
    EXPECT_EQ(bad.output + "|" + bad.error, "|odd output");
    tool.nativeRun = nullptr;
    EXPECT_EQ(HarnessRunner::executeBuilt(tool, {}).error, "missing required argument: to") << "a script tool's is";
    EXPECT_EQ(audit->count(), 0);
}

} // namespace
} // namespace mervo
