#include "core/policy/AuditLog.h"

#include "core/foundation/Timestamps.h"
#include "core/policy/PolicyRule.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace mervo {
namespace {

class AuditTrail : public testing::Test {
protected:
    std::shared_ptr<MervoDB> db = MervoDB::inMemory();
    AuditLog log{db};

    void insert(const std::string& timestamp, const std::string& outcome, const std::string& reason,
        const std::string& details = "{}", const std::string& action = "mail.send")
    {
        db->database()
            .prepare(
                "INSERT INTO audit (timestamp, actor, action, outcome, reason, details) VALUES (?, 'cli', ?, ?, ?, ?)")
            .bind(timestamp)
            .bind(action)
            .bind(outcome)
            .bind(reason)
            .bind(details)
            .run();
    }
    static std::string daysAgo(int days)
    {
        return Timestamps::string(std::chrono::system_clock::now() - std::chrono::days(days));
    }
};

TEST_F(AuditTrail, keepsRowsAsWritten)
{
    log.log("mcp:x", "mail.send", "acc", {{"to", "é\n"}, {"body", "\""}}, "executed", "read");
    log.log("cockpit", "rule_add", std::nullopt, {}, "executed", std::nullopt);
    const auto rows = log.recent(10);
    ASSERT_EQ(rows.size(), 2U);
    EXPECT_EQ(rows[0].action, "rule_add") << "newest first";
    EXPECT_EQ(rows[0].accountId, std::nullopt);
    EXPECT_EQ(rows[0].reason, std::nullopt);
    AuditEntry expected{
        rows[1].timestamp, "mcp:x", "mail.send", "acc", {{"to", "é\n"}, {"body", "\""}}, "executed", "read"};
    EXPECT_EQ(rows[1], expected);
    EXPECT_TRUE(Timestamps::date(rows[1].timestamp)) << rows[1].timestamp;
    auto query = db->database().prepare("SELECT details FROM audit WHERE id = 1");
    ASSERT_TRUE(query.step());
    EXPECT_EQ(query.text("details"), R"({"body":"\"","to":"é\n"})") << "sorted and compact";
    EXPECT_EQ(log.count(), 2);
    EXPECT_TRUE(log.recent(0).empty());
    EXPECT_EQ(log.recent(1).size(), 1U);
}

TEST(Codings, recordsStandUnderTheNamesOfTheirFields)
{
    AuditEntry entry{"2026-03-01T08:15:42Z", "cli", "mail.send", {}, {{"to", "é"}, {"body", "\n"}}, "executed", {}};
    EXPECT_EQ(entry.encode(),
        R"({"timestamp":"2026-03-01T08:15:42Z","actor":"cli","action":"mail.send",)"
        R"("details":{"body":"\n","to":"é"},"outcome":"executed"})");
    EXPECT_EQ(AuditEntry::decode(entry.encode()), entry);
    entry.accountId = "";
    entry.reason = "read";
    EXPECT_EQ(AuditEntry::decode(entry.encode()), entry);

    PolicyRule rule{"ABCD1234", false, {}, "mail.*", {{"to", "x"}}, PolicyRule::Decision::deny,
        PolicyRule::Source::learned, "2026-03-01T08:15:42Z"};
    EXPECT_EQ(rule.encode(),
        R"({"id":"ABCD1234","enabled":false,"toolPattern":"mail.*","match":{"to":"x"},"decision":"deny",)"
        R"("source":"learned","createdAt":"2026-03-01T08:15:42Z"})");
    EXPECT_EQ(PolicyRule::decode(rule.encode()), rule);
    rule.account = "Work";
    EXPECT_EQ(PolicyRule::decode(rule.encode()), rule);
    EXPECT_TRUE(PolicyRule::decode(rule.encode().insert(1, R"("more":[1],)")));
}

TEST(Codings, whatIsNotWholeIsNothing)
{
    const std::string entry = AuditEntry{"t", "a", "b", "c", {{"k", "v"}}, "d", "e"}.encode();
    const std::string rule = PolicyRule{"1", true, "w", "*", {{"k", "v"}}, {}, {}, "t"}.encode();
    ASSERT_TRUE(AuditEntry::decode(entry) && PolicyRule::decode(rule));
    for (const std::string& whole : {entry, rule}) {
        const auto object = nlohmann::json::parse(whole);
        for (const auto& [key, value] : object.items()) {
            for (const nlohmann::json& other : {nlohmann::json(7), nlohmann::json::array(), nlohmann::json("odd"),
                     nlohmann::json{{"k", 7}}, nlohmann::json()}) {
                auto changed = object;
                changed[key] = other;
                if (other.is_null())
                    changed.erase(key);
                const bool good = (key == "accountId" || key == "reason" || key == "account") && other.is_null();
                const bool text = value.is_string() && other.is_string() && key != "decision" && key != "source";
                EXPECT_EQ(AuditEntry::decode(changed.dump()) || PolicyRule::decode(changed.dump()), good || text)
                    << changed;
            }
        }
    }
    for (const std::string& json : {std::string(), std::string("[]"), entry.substr(1), std::string(100000, '[')})
        EXPECT_FALSE(AuditEntry::decode(json) || PolicyRule::decode(json));
}

TEST_F(AuditTrail, textsThatAreNoUtf8DoNotSpoilTheTrail)
{
    log.log("a\xFF", "x", std::nullopt, {{"k", "\xFF"}}, "error", "bad \xC3 byte");
    const AuditEntry row = log.recent(1).at(0);
    EXPECT_EQ(row.actor, "a\uFFFD");
    EXPECT_EQ(row.reason, "bad \uFFFD byte");
    EXPECT_TRUE(row.details.empty());
    auto query = db->database().prepare("SELECT details FROM audit");
    ASSERT_TRUE(query.step());
    EXPECT_EQ(query.text("details"), "{}");
}

TEST_F(AuditTrail, damagedDetailsReadAsNone)
{
    for (const std::string details : {"", "x", "[]", "{\"a\":1}", "{\"a\":{\"b\":\"c\"}}", "{\"a\":\"b\""})
        insert("2026-01-01T00:00:00Z", "sent", "r", details);
    insert("2026-01-01T00:00:00Z", "sent", "r", std::string(2'000'000, '['));
    const auto rows = log.recent(100);
    ASSERT_EQ(rows.size(), 7U);
    for (const AuditEntry& row : rows)
        EXPECT_TRUE(row.details.empty() && row.outcome == "sent");
}

TEST_F(AuditTrail, theDayIsTheUtcDay)
{
    const std::string today = Timestamps::now().substr(0, 10);
    insert(today + "T00:00:00Z", "executed", "rule_allow:A");
    insert(today + "T23:59:59Z", "executed", "rule_allow:B");
    insert(daysAgo(1).substr(0, 10) + "T23:59:59Z", "executed", "rule_allow:A");
    insert(today + "T00:00:00Z", "error", "rule_allow:A");
    insert(today + "T00:00:00Z", "executed", "approved");
    insert(today + "T00:00:00Z", "executed", "xrule_allow:A");
    insert(today + "T00:00:00Z", "sent", "x", "{}", "send");
    insert(daysAgo(1), "sent", "x", "{}", "send");
    EXPECT_EQ(log.mutationsToday(), 2);
    EXPECT_EQ(log.sentToday(), 1);
}

TEST_F(AuditTrail, searchLooksIntoEveryColumn)
{
    log.log(
        "cli", "mail.send", "Home-Account", {{"subject", "Quarterly 100% plan"}}, "executed", "rule_allow:ABCD1234");
    log.log("auto:nightly", "cal.add", std::nullopt, {{"title", "Lunch"}}, "denied", "rule_deny:FFFF0000");
    log.log("cli", "ask", std::nullopt, {}, "error", std::nullopt);
    const std::pair<const char*, std::size_t> cases[]{{"ABCD", 1}, {"mail.se", 1}, {"MAIL.SE", 1}, {"quarterly", 1},
        {"subject", 1}, {"nightly", 1}, {"home-acc", 1}, {"denied", 1}, {"", 3}, {"%", 3}, {"rule%0000", 1},
        {"r_le_", 2}, {"' OR 1=1 --", 0}, {"absent", 0}, {"cli", 2}};
    for (const auto& [text, found] : cases)
        EXPECT_EQ(log.search(text, 100).size(), found) << text;
    EXPECT_EQ(log.search("", 2).at(0).action, "ask");
    EXPECT_EQ(log.search("", 2).size(), 2U);
}

TEST_F(AuditTrail, pruningDeletesOldRowsOnlyAndNumbersGoOn)
{
    insert(daysAgo(89), "executed", "");
    EXPECT_EQ(log.prune(90), 0);
    insert(daysAgo(91), "executed", "");
    insert(daysAgo(4000), "executed", "");
    EXPECT_EQ(log.prune(90), 2);
    EXPECT_EQ(log.count(), 1);
    EXPECT_EQ(log.prune(INT64_MAX), 0);
    EXPECT_EQ(log.prune(1), 1);
    log.log("a", "b", std::nullopt, {}, "executed", std::nullopt);
    auto query = db->database().prepare("SELECT id FROM audit");
    ASSERT_TRUE(query.step());
    EXPECT_EQ(query.integer("id"), 4) << "a number is never given twice";
}

TEST_F(AuditTrail, failuresAreDropped)
{
    AuditLog none(nullptr);
    db->database().execute("DROP TABLE audit");
    for (AuditLog* broken : {&none, &log}) {
        broken->log("a", "b", std::nullopt, {}, "executed", std::nullopt);
        EXPECT_TRUE(broken->recent(5).empty());
        EXPECT_TRUE(broken->search("", 5).empty());
        EXPECT_EQ(broken->count() + broken->mutationsToday() + broken->sentToday() + broken->prune(1), 0);
    }
}

} // namespace
} // namespace mervo
