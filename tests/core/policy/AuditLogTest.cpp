#include "core/policy/AuditLog.h"

#include "core/foundation/Timestamps.h"
#include "core/policy/PolicyRule.h"
#include "tests/support/Files.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <random>

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

/// Everything that can happen between two counts, at random, on two connections: the count that is kept must be the one
/// that the whole table gives.
TEST(TodayCount, isTheFullCountWhateverHappens)
{
    const test::TempDir dir;
    const auto own = std::make_shared<MervoDB>(dir.path()), other = std::make_shared<MervoDB>(dir.path());
    for (const auto& db : {own, other})
        db->database().execute("PRAGMA synchronous = OFF"); // nothing here need outlive a power cut
    AuditLog log(own), foreignLog(other);
    TodayCount count;
    std::minstd_rand random(4711);
    const auto any = [&](int below) { return static_cast<int>(random() % static_cast<unsigned>(below)); };
    const std::string days[]{Timestamps::now().substr(0, 10) + "T00:00:00Z",
        Timestamps::string(std::chrono::system_clock::now() + std::chrono::hours(24)).substr(0, 10) + "T00:00:00Z"};
    const char* reasons[]{"rule_allow:A", "RULE_allow:", "rule_allow", "xrule_allow:A", "approved"};
    const char* outcomes[]{"executed", "executed", "Executed", "error"};
    std::int64_t full = 0, kept = 0;
    const auto add = [&](std::shared_ptr<MervoDB> db, const std::string& time) {
        const std::string outcome = outcomes[any(4)], reason = reasons[any(5)];
        db->database().read([&](Database& open) {
            const auto before = open.totalChanges();
            open.prepare("INSERT INTO audit (timestamp, actor, action, outcome, reason, details) VALUES (?, '', '', ?, "
                         "?, '')")
                .bind(time)
                .bind(outcome)
                .bind(reason)
                .run();
            if (db == own)
                count.added(own, before, time, outcome, reason);
        });
    };
    for (int step = 0; step < 2000; ++step) {
        const auto& db = any(2) == 0 ? own : other;
        switch (any(any(4) == 0 ? 9 : 3)) {
        case 0:
        case 1:
            add(own, days[any(2)]);
            break;
        case 2:
            add(db, days[any(2)].substr(0, 10) + "T23:59:59Z");
            break;
        case 3:
            (db == own ? log : foreignLog).log("", "", {}, {}, outcomes[any(4)], reasons[any(5)]);
            break;
        case 4:
            db->database().execute("DELETE FROM audit WHERE id % 7 = 0");
            break;
        case 5:
            db->database().execute("UPDATE audit SET reason = 'approved' WHERE id % 11 = 0");
            break;
        case 6:
            (db == own ? log : foreignLog).prune(any(3) - 1);
            break;
        case 7:
            EXPECT_THROW(own->database().write([&](Database& open) {
                open.execute("INSERT INTO audit SELECT NULL, timestamp, '', '', '', 'executed', 'rule_allow:', '' "
                             "FROM audit LIMIT 3");
                throw 7;
            }),
                int);
            break;
        default:
            db->database().execute("BEGIN; DELETE FROM audit; ROLLBACK");
            break;
        }
        const std::string& day = days[any(50) == 0 ? 1 : 0];
        auto query = other->database().prepare(
            "SELECT COUNT(*) FROM audit WHERE outcome = 'executed' AND reason LIKE 'rule_allow:%' AND timestamp >= ?");
        query.bind(day).step();
        ASSERT_EQ(count.since(own, day), query.integer(0)) << step;
        ASSERT_EQ(log.mutationsToday(), count.since(own, days[0]));
        full += query.integer(0);
        kept += 1;
    }
    EXPECT_GT(full, kept) << "there was something to count";
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
