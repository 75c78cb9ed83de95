#include "core/policy/ActionPolicy.h"

#include <gtest/gtest.h>

namespace mervo::ActionPolicy {
namespace {

constexpr auto kRead = Effect::read;
constexpr auto kCreate = Effect::create;
constexpr auto kDestructive = Effect::destructive;
constexpr auto kPanic = AutonomyMode::panic;
constexpr auto kCopilote = AutonomyMode::copilote;
constexpr auto kYolo = AutonomyMode::yolo;
constexpr auto kAuto = Decision::automatic;
constexpr auto kAsk = Decision::ask;
constexpr auto kDeny = Decision::deny;

constexpr auto kAllowRule = PolicyRule::Decision::allow;
constexpr auto kDenyRule = PolicyRule::Decision::deny;
constexpr auto kAskRule = PolicyRule::Decision::ask;

PolicyRule rule(std::string id, PolicyRule::Decision decision, std::string pattern = "*")
{
    PolicyRule made;
    made.id = std::move(id);
    made.decision = decision;
    made.toolPattern = std::move(pattern);
    return made;
}

PolicyRule with(PolicyRule made, const std::string& key, const std::string& part)
{
    made.match[key] = part;
    return made;
}

PolicyRule disabled(PolicyRule made)
{
    made.enabled = false;
    return made;
}

const Args kArgs{{"to", "Anna <anna@acme.example>"}, {"subject", "Offer"}, {"account", "Work"}};

std::string asText(const Outcome& outcome)
{
    return std::string(name(outcome.decision)) + " " + outcome.ruleID.value_or("-") + " " + outcome.reason;
}

/// The whole matrix: one row for each effect and each of the six states that a row of columns can be in.
TEST(ActionPolicy, everyCellOfTheMatrix)
{
    const std::vector<PolicyRule> none, allow{rule("A", kAllowRule)}, ask{rule("Q", kAskRule)},
        deny{rule("D", kDenyRule)};
    struct Column {
        const char* what;
        AutonomyMode mode;
        const std::vector<PolicyRule>& rules;
        std::int64_t today;
        std::array<const char*, 3> expected; ///< read, create, destructive
    };
    const Column columns[]{
        {"panic", kPanic, none, 0, {"auto - read", "ask - policy_panic", "ask - policy_panic"}},
        {"panic, allow", kPanic, allow, 0, {"auto - read", "ask - policy_panic", "ask - policy_panic"}},
        {"panic, ask", kPanic, ask, 0, {"auto - read", "ask - policy_panic", "ask - policy_panic"}},
        {"copilote", kCopilote, none, 100, {"auto - read", "auto - policy_copilote", "ask - policy_copilote"}},
        {"allow under the cap", kCopilote, allow, 99, {"auto - read", "auto A rule_allow:A", "auto A rule_allow:A"}},
        {"allow at the cap", kCopilote, allow, 100, {"auto - read", "ask A cap_reached", "ask A cap_reached"}},
        {"allow over the cap", kCopilote, allow, 101, {"auto - read", "ask A cap_reached", "ask A cap_reached"}},
        {"ask", kCopilote, ask, 100, {"auto - read", "ask Q rule_ask:Q", "ask Q rule_ask:Q"}},
        {"yolo", kYolo, none, 100, {"auto - read", "auto - yolo_auto", "auto - yolo_auto"}},
        {"yolo, ask", kYolo, ask, 100, {"auto - read", "auto - yolo_auto", "auto - yolo_auto"}},
        {"yolo, allow at the cap", kYolo, allow, 100, {"auto - read", "auto - yolo_auto", "auto - yolo_auto"}},
        {"deny in panic", kPanic, deny, 0, {"deny D rule_deny:D", "deny D rule_deny:D", "deny D rule_deny:D"}},
        {"deny in copilote", kCopilote, deny, 0, {"deny D rule_deny:D", "deny D rule_deny:D", "deny D rule_deny:D"}},
        {"deny in yolo", kYolo, deny, 0, {"deny D rule_deny:D", "deny D rule_deny:D", "deny D rule_deny:D"}},
    };
    for (const auto& [what, mode, rules, today, expected] : columns) {
        for (const Effect effect : kAllEffects) {
            const Outcome outcome = decide("mail.send", effect, kArgs, mode, rules, today, 100);
            EXPECT_EQ(asText(outcome), expected[static_cast<std::size_t>(effect)]) << what << ", " << rawValue(effect);
        }
    }
}

TEST(ActionPolicy, theSliderAlone)
{
    const bool expected[3][3]{{false, false, false}, {true, false, false}, {true, true, false}};
    for (const Effect effect : kAllEffects) {
        for (const AutonomyMode mode : kAllAutonomyModes) {
            EXPECT_EQ(defaultRequiresApproval(effect, mode),
                expected[static_cast<std::size_t>(effect)][static_cast<std::size_t>(mode)]);
        }
    }
}

TEST(ActionPolicy, rulesRankAmongThemselves)
{
    const PolicyRule family = with(rule("F", kAllowRule, "mail.*"), "to", "acme"); // specificity 2
    const PolicyRule exact = rule("E", kAskRule, "mail.send"); // 1
    struct Case {
        const char* what;
        std::vector<PolicyRule> rules;
        const char* expected;
    };
    const Case cases[]{
        {"a condition beats the exact name", {exact, family}, "auto F rule_allow:F"},
        {"in any order", {family, exact}, "auto F rule_allow:F"},
        {"ask wins with more conditions", {with(exact, "to", "acme"), rule("A", kAllowRule)}, "ask E rule_ask:E"},
        {"allow wins with more conditions", {rule("A", kAskRule), family}, "auto F rule_allow:F"},
        {"a tie goes to the first, allow", {rule("1", kAllowRule), rule("2", kAskRule)}, "auto 1 rule_allow:1"},
        {"a tie goes to the first, ask", {rule("1", kAskRule), rule("2", kAllowRule)}, "ask 1 rule_ask:1"},
        {"deny outranks the more specific", {family, rule("D", kDenyRule)}, "deny D rule_deny:D"},
        {"the more specific deny", {rule("1", kDenyRule), rule("2", kDenyRule, "mail.*")}, "deny 2 rule_deny:2"},
        {"wherever it stands", {rule("2", kDenyRule, "mail.*"), rule("1", kDenyRule)}, "deny 2 rule_deny:2"},
        {"a tie of denies", {rule("1", kDenyRule), rule("2", kDenyRule)}, "deny 1 rule_deny:1"},
        {"a disabled deny", {disabled(rule("D", kDenyRule)), exact}, "ask E rule_ask:E"},
        {"no rule that matches", {rule("1", kDenyRule, "cal.*"), with(exact, "body", "x")}, "ask - policy_copilote"},
    };
    for (const auto& [what, rules, expected] : cases)
        EXPECT_EQ(asText(decide("mail.send", kDestructive, kArgs, kCopilote, rules, 0, 100)), expected) << what;
}

TEST(ActionPolicy, theCapBindsOnlyAllowRules)
{
    const std::vector<PolicyRule> allow{rule("A", kAllowRule)};
    for (const auto& [today, cap, capped] :
        {std::tuple{0, 0, true}, {0, -5, true}, {99, 100, false}, {100, 100, true}}) {
        EXPECT_EQ(
            decide("x", kCreate, {}, kCopilote, allow, today, cap).reason, capped ? "cap_reached" : "rule_allow:A");
        EXPECT_EQ(decide("x", kCreate, {}, kCopilote, {}, today, cap).decision, kAuto);
        EXPECT_EQ(decide("x", kDestructive, {}, kYolo, allow, today, cap).decision, kAuto);
    }
}

TEST(ActionPolicy, aStricterModeNeverLoosensTheAnswer)
{
    const std::vector<PolicyRule> sets[]{{}, {rule("A", kAllowRule)}, {rule("D", kDenyRule)}};
    for (const auto& rules : sets) {
        for (const Effect effect : kAllEffects) {
            const auto in = [&](AutonomyMode mode) { return decide("x", effect, {}, mode, rules, 0, 100).decision; };
            EXPECT_LE(in(kPanic), in(kCopilote));
            EXPECT_LE(in(kCopilote), in(kYolo));
        }
    }
    EXPECT_EQ(Outcome{}.decision, kDeny) << "forgotten means refused";
    EXPECT_EQ(decide("x", kRead, {}, kPanic, {}, 0, 0).decision, kAuto);
    EXPECT_EQ(decide("x", kDestructive, {}, kPanic, {}, 0, 0).decision, kAsk);
}

} // namespace
} // namespace mervo::ActionPolicy
