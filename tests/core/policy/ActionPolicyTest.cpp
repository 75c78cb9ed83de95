#include "core/policy/ActionPolicy.h"

#include <gtest/gtest.h>

namespace mervo::ActionPolicy {
namespace {

constexpr auto kPanic = AutonomyMode::panic;
constexpr auto kCopilote = AutonomyMode::copilote;
constexpr auto kYolo = AutonomyMode::yolo;

constexpr auto kAllowRule = PolicyRule::Decision::allow;
constexpr auto kDenyRule = PolicyRule::Decision::deny;
constexpr auto kAskRule = PolicyRule::Decision::ask;

PolicyRule rule(std::string id, PolicyRule::Decision decision)
{
    PolicyRule made;
    made.id = std::move(id);
    made.decision = decision;
    made.toolPattern = "*";
    return made;
}

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
            const Outcome outcome = decide("mail.send", effect, {}, mode, rules, today, 100);
            EXPECT_EQ(asText(outcome), expected[static_cast<std::size_t>(effect)]) << what << ", " << rawValue(effect);
        }
    }
    EXPECT_EQ(Outcome{}.decision, Decision::deny) << "forgotten means refused";
}

} // namespace
} // namespace mervo::ActionPolicy
