#include "core/policy/ActionPolicy.h"

#include <gtest/gtest.h>
#include <random>

namespace mervo::ActionPolicy {
namespace {

/// The judgement written down a second time, as plainly as can be: no sharing with the code under test.
class Naive {
public:
    static std::string lower(std::string text)
    {
        for (char& letter : text)
            letter = static_cast<char>(std::tolower(static_cast<unsigned char>(letter)));
        return text;
    }

    static bool matches(const PolicyRule& rule, const std::string& tool, const Args& args)
    {
        const std::string& pattern = rule.toolPattern;
        const bool family = pattern.size() >= 2 && pattern.substr(pattern.size() - 2) == ".*";
        const bool toolFits = pattern == "*"
            || (family ? tool.compare(0, pattern.size() - 1, pattern, 0, pattern.size() - 1) == 0 : pattern == tool);
        if (!rule.enabled || !toolFits)
            return false;
        if (!rule.account.value_or("").empty()) {
            const auto given = args.find("account");
            if (given == args.end() || lower(given->second) != lower(*rule.account))
                return false;
        }
        for (const auto& [key, part] : rule.match) {
            const auto given = args.find(key);
            if (given == args.end() || lower(given->second).find(lower(part)) == std::string::npos)
                return false;
        }
        return true;
    }

    static int rank(const PolicyRule& rule)
    {
        int rank = static_cast<int>(rule.match.size());
        if (rule.account && *rule.account != "")
            ++rank;
        if (rule.toolPattern != "*")
            ++rank;
        return rank;
    }

    /// The index of the best rule among those of the decisions, -1 for none.
    static int best(const std::vector<PolicyRule>& rules, const std::vector<bool>& matching, bool deny)
    {
        int found = -1;
        for (int i = static_cast<int>(rules.size()) - 1; i >= 0; --i) {
            const auto at = static_cast<std::size_t>(i);
            const bool inGroup = (rules[at].decision == PolicyRule::Decision::deny) == deny;
            if (matching[at] && inGroup
                && (found < 0 || rank(rules[at]) >= rank(rules[static_cast<std::size_t>(found)])))
                found = i;
        }
        return found;
    }
};

struct World {
    std::vector<PolicyRule> rules;
    std::string tool;
    Effect effect;
    Args args;
    AutonomyMode mode;
    std::int64_t today;
    std::int64_t cap;
};

class Dice {
public:
    explicit Dice(unsigned seed)
        : engine_(seed)
    {
    }
    template <typename List>
    auto one(const List& list)
    {
        return *(std::begin(list) + static_cast<std::ptrdiff_t>(engine_() % std::size(list)));
    }
    bool chance(unsigned percent) { return engine_() % 100 < percent; }

    PolicyRule rule(int number)
    {
        static const char* const patterns[]{
            "*", "*", "mail.*", "cal.*", ".*", "mail.send", "mail*", "MAIL.*", "*.send", ""};
        static const PolicyRule::Decision decisions[]{
            PolicyRule::Decision::allow, PolicyRule::Decision::ask, PolicyRule::Decision::deny};
        PolicyRule made;
        made.id = "R" + std::to_string(number);
        made.enabled = chance(85);
        made.toolPattern = one(patterns);
        made.decision = chance(80) ? decisions[chance(50) ? 1 : 0] : PolicyRule::Decision::deny;
        if (chance(30))
            made.account = one(std::array{"Work", "WORK", "Home", ""});
        for (const char* key : {"to", "subject", "body"}) {
            if (chance(20))
                made.match[key] = one(std::array{"acme", "ACME", "x", ""});
        }
        return made;
    }

    World world()
    {
        World made;
        const unsigned count = engine_() % 9;
        for (unsigned i = 0; i < count; ++i)
            made.rules.push_back(rule(static_cast<int>(i)));
        made.tool = one(std::array{
            "mail.send", "mail.search", "mail.", "mail", "mailx.send", "gmail.send", "cal.add", ".hidden", ""});
        made.effect = one(kAllEffects);
        made.mode = chance(60) ? AutonomyMode::copilote : one(kAllAutonomyModes);
        for (const char* key : {"to", "subject", "account"}) {
            if (chance(70))
                made.args[key] = one(std::array{"Anna@Acme.example", "x", "work", "Home", ""});
        }
        made.today = engine_() % 3;
        made.cap = engine_() % 4;
        made.cap -= 1; // one below zero too
        return made;
    }

private:
    std::mt19937 engine_;
};

std::string describe(const World& world)
{
    std::string text = world.tool + " " + std::string(rawValue(world.effect)) + " " + std::string(rawValue(world.mode));
    for (const auto& [key, value] : world.args)
        text += " " + key + "=" + value;
    for (const PolicyRule& rule : world.rules)
        text += "\n  " + rule.id + " " + std::string(rawValue(rule.decision)) + " " + rule.toolPattern;
    return text;
}

Outcome expectedOutcome(const World& w, const std::vector<bool>& matching)
{
    const auto id = [&](int at) { return w.rules[static_cast<std::size_t>(at)].id; };
    if (const int deny = Naive::best(w.rules, matching, true); deny >= 0)
        return {Decision::deny, id(deny), "rule_deny:" + id(deny)};
    if (w.effect == Effect::read)
        return {Decision::automatic, {}, "read"};
    if (w.mode == AutonomyMode::yolo)
        return {Decision::automatic, {}, "yolo_auto"};
    const int other = Naive::best(w.rules, matching, false);
    if (w.mode == AutonomyMode::copilote && other >= 0) {
        if (w.rules[static_cast<std::size_t>(other)].decision == PolicyRule::Decision::ask)
            return {Decision::ask, id(other), "rule_ask:" + id(other)};
        if (w.today >= w.cap)
            return {Decision::ask, id(other), "cap_reached"};
        return {Decision::automatic, id(other), "rule_allow:" + id(other)};
    }
    if (w.mode == AutonomyMode::panic)
        return {Decision::ask, {}, "policy_panic"};
    return {w.effect == Effect::create ? Decision::automatic : Decision::ask, {}, "policy_copilote"};
}

Standing expectedStanding(const World& w, const std::vector<bool>& matching, std::size_t at, const Outcome& outcome)
{
    const PolicyRule& rule = w.rules[at];
    if (!matching[at])
        return Standing::doesNotMatch;
    if (outcome.ruleID == rule.id)
        return outcome.reason == "cap_reached" ? Standing::cappedWinner : Standing::won;
    const bool isDeny = rule.decision == PolicyRule::Decision::deny;
    if (outcome.decision == Decision::deny && !isDeny)
        return Standing::outrankedByDeny;
    if (outcome.ruleID) {
        const auto winner = static_cast<std::size_t>(Naive::best(w.rules, matching, isDeny));
        return Naive::rank(rule) == Naive::rank(w.rules[winner]) ? Standing::olderTie : Standing::lessSpecific;
    }
    if (w.effect == Effect::read)
        return Standing::readsAlwaysRun;
    return w.mode == AutonomyMode::yolo ? Standing::yoloRunsAll : Standing::panicHoldsAll;
}

TEST(Explanation, agreesWithTheDecisionInRandomWorlds)
{
    Dice dice(20260301);
    for (int round = 0; round < 30000; ++round) {
        const World w = dice.world();
        std::vector<bool> matching;
        for (const PolicyRule& rule : w.rules)
            matching.push_back(Naive::matches(rule, w.tool, w.args));
        Trace trace;
        const Outcome outcome = decide(w.tool, w.effect, w.args, w.mode, w.rules, w.today, w.cap, &trace);
        ASSERT_EQ(outcome, expectedOutcome(w, matching)) << outcome.reason << " for " << describe(w);
        ASSERT_EQ(outcome, decide(w.tool, w.effect, w.args, w.mode, w.rules, w.today, w.cap));
        ASSERT_EQ(trace.entries.size(), w.rules.size());
        int winners = 0;
        for (std::size_t at = 0; at < w.rules.size(); ++at) {
            const Trace::Entry& entry = trace.entries[at];
            ASSERT_EQ(entry.rule, &w.rules[at]);
            ASSERT_EQ(entry.fit.mismatch == PolicyRule::Mismatch::none, matching[at]) << describe(w);
            ASSERT_EQ(entry.standing, expectedStanding(w, matching, at, outcome))
                << entry.rule->id << " in " << describe(w);
            winners += entry.standing == Standing::won || entry.standing == Standing::cappedWinner ? 1 : 0;
        }
        ASSERT_EQ(winners, outcome.ruleID ? 1 : 0) << describe(w);
    }
}

} // namespace
} // namespace mervo::ActionPolicy
