#include "core/policy/RuleStore.h"

#include "tests/support/Files.h"

#include <gtest/gtest.h>

namespace mervo {
namespace {

PolicyRule rule(std::string id, std::string createdAt)
{
    PolicyRule made;
    made.id = std::move(id);
    made.createdAt = std::move(createdAt);
    return made;
}

std::vector<std::string> ids(RuleStore& store)
{
    std::vector<std::string> list;
    for (const PolicyRule& made : store.all())
        list.push_back(made.id);
    return list;
}

TEST(RuleStore, keepsRulesNewestFirst)
{
    RuleStore store(MervoDB::inMemory());
    PolicyRule full{"B", false, "Work", "mail.*", {{"to", "a\"b"}, {"from", "é"}}, PolicyRule::Decision::deny,
        PolicyRule::Source::learned, "2026-01-02T00:00:00Z"};
    store.add(rule("A", "2026-01-01T00:00:00Z"));
    store.add(full);
    store.add(rule("C", "2025-12-31T23:59:59Z"));
    EXPECT_EQ(ids(store), (std::vector<std::string>{"B", "A", "C"}));
    EXPECT_EQ(store.rule("B"), full);
    EXPECT_EQ(store.rule("b"), std::nullopt);
    EXPECT_EQ(store.rule("A")->account, std::nullopt) << "absent is not empty";

    store.setEnabled("B", true);
    full.enabled = true;
    EXPECT_EQ(store.rule("B"), full);
    store.remove("A");
    store.remove("gone");
    EXPECT_EQ(ids(store), (std::vector<std::string>{"B", "C"}));
}

TEST(RuleStore, changingARuleKeepsItsCreation)
{
    RuleStore store(MervoDB::inMemory());
    store.add(rule("A", "2026-01-01T00:00:00Z"));
    PolicyRule changed{"A", false, "X", "cal.*", {{"k", "v"}}, PolicyRule::Decision::allow, PolicyRule::Source::learned,
        "2030-01-01T00:00:00Z"};
    store.add(changed);
    changed.createdAt = "2026-01-01T00:00:00Z";
    EXPECT_EQ(store.all(), std::vector<PolicyRule>{changed});
}

TEST(RuleStore, readsRowsOfAnyMaking)
{
    const auto db = MervoDB::inMemory();
    const auto insert = [&](const char* values) {
        db->database().execute(std::string("INSERT INTO policy_rules VALUES (") + values + ")");
    };
    insert("'1', 7, '', '*', 'broken', 'maybe', 'somewhere', '5'");
    insert("'2', 0, NULL, 'x', '{\"a\":1}', 'ALLOW', 'learned', '4'");
    insert("'3', -1, 'A', 'x', X'7b2261223a22ff227d', 'allow', 'user', '3'");
    insert("'4', 1, 'A', 'x', '{\"a\":\"b\",\"c\":\"\\u00e9\"}', 'deny', '', '2'");
    insert("'5', 1, NULL, 'x', replace(hex(zeroblob(500000)), '00', '[['), 'deny', '', '1'");
    using Rule = PolicyRule;
    const std::vector<PolicyRule> expected{
        {"1", true, "", "*", {}, Rule::Decision::ask, Rule::Source::user, "5"},
        {"2", false, std::nullopt, "x", {}, Rule::Decision::ask, Rule::Source::learned, "4"},
        {"3", true, "A", "x", {}, Rule::Decision::allow, Rule::Source::user, "3"},
        {"4", true, "A", "x", {{"a", "b"}, {"c", "é"}}, Rule::Decision::deny, Rule::Source::user, "2"},
        {"5", true, std::nullopt, "x", {}, Rule::Decision::deny, Rule::Source::user, "1"},
    };
    EXPECT_EQ(RuleStore(db).all(), expected);
}

TEST(RuleStore, whatCannotBeEncodedIsStoredEmpty)
{
    const auto db = MervoDB::inMemory();
    PolicyRule odd = rule("A", "t");
    odd.match["k"] = "\xFF";
    RuleStore(db).add(odd);
    auto query = db->database().prepare("SELECT match_json FROM policy_rules");
    ASSERT_TRUE(query.step());
    EXPECT_EQ(query.text("match_json"), "{}");
}

TEST(RuleStore, failuresAreDropped)
{
    const auto db = MervoDB::inMemory();
    db->database().execute("DROP TABLE policy_rules");
    for (RuleStore store : {RuleStore(nullptr), RuleStore(db)}) {
        store.add(rule("A", "t"));
        store.remove("A");
        store.setEnabled("A", false);
        EXPECT_TRUE(store.all().empty());
        EXPECT_EQ(store.rule("A"), std::nullopt);
    }
}

} // namespace
} // namespace mervo
