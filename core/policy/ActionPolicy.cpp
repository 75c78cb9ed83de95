#include "core/policy/ActionPolicy.h"

namespace mervo {

namespace {

using ActionPolicy::Decision;
using ActionPolicy::Outcome;
using ActionPolicy::Standing;
using ActionPolicy::Trace;

bool isDeny(const Trace::Entry& entry)
{
    return entry.rule->decision == PolicyRule::Decision::deny;
}
bool isAllowOrAsk(const Trace::Entry& entry)
{
    return !isDeny(entry);
}

bool matched(const Trace::Entry& entry)
{
    return entry.fit.mismatch == PolicyRule::Mismatch::none;
}

std::vector<Trace::Entry> fitAll(std::string_view toolID, const Args& args, std::span<const PolicyRule> rules)
{
    const FoldedArgs folded(args);
    std::vector<Trace::Entry> entries;
    entries.reserve(rules.size());
    for (const PolicyRule& rule : rules)
        entries.push_back({&rule, rule.fit(toolID, folded), Standing::doesNotMatch});
    return entries;
}

/// Gives every matching rule of a group the same standing.
template <typename Group>
void stand(std::vector<Trace::Entry>& entries, Group&& group, Standing standing)
{
    for (Trace::Entry& entry : entries) {
        if (matched(entry) && group(entry))
            entry.standing = standing;
    }
}

/// The most specific matching rule of a group, and among equals the first in the list, which is the newest; null
/// when none matches. The others of the group get to know why they lost.
template <typename Group>
Trace::Entry* pick(std::vector<Trace::Entry>& entries, Group&& group)
{
    Trace::Entry* best = nullptr;
    int highest = 0;
    for (Trace::Entry& entry : entries) {
        if (!matched(entry) || !group(entry))
            continue;
        const int specificity = entry.rule->specificity();
        entry.standing = best != nullptr && specificity == highest ? Standing::olderTie : Standing::lessSpecific;
        if (best == nullptr || specificity > highest) {
            best = &entry;
            highest = specificity;
        }
    }
    if (best == nullptr)
        return nullptr;
    best->standing = Standing::won;
    for (Trace::Entry* entry = entries.data(); entry != best; ++entry) {
        if (entry->standing == Standing::olderTie) // tied with a rule that then lost itself
            entry->standing = Standing::lessSpecific;
    }
    return best;
}

Outcome byRule(Decision decision, const PolicyRule& rule, std::string_view reason)
{
    return {decision, rule.id, std::string(reason) + rule.id};
}

Outcome byMode(Decision decision, std::string reason)
{
    return {decision, std::nullopt, std::move(reason)};
}

Outcome byAllowOrAsk(Trace::Entry& winner, bool capReached)
{
    const PolicyRule& rule = *winner.rule;
    if (rule.decision == PolicyRule::Decision::ask)
        return byRule(Decision::ask, rule, "rule_ask:");
    if (capReached) {
        winner.standing = Standing::cappedWinner;
        return {Decision::ask, rule.id, "cap_reached"};
    }
    return byRule(Decision::automatic, rule, "rule_allow:");
}

Outcome bySlider(Effect effect, AutonomyMode mode)
{
    const bool waits = ActionPolicy::defaultRequiresApproval(effect, mode);
    return byMode(waits ? Decision::ask : Decision::automatic, "policy_" + std::string(rawValue(mode)));
}

Outcome judge(std::vector<Trace::Entry>& entries, Effect effect, AutonomyMode mode, bool capReached)
{
    if (const Trace::Entry* deny = pick(entries, isDeny)) {
        stand(entries, isAllowOrAsk, Standing::outrankedByDeny);
        return byRule(Decision::deny, *deny->rule, "rule_deny:");
    }
    if (effect == Effect::read) {
        stand(entries, isAllowOrAsk, Standing::readsAlwaysRun);
        return byMode(Decision::automatic, "read");
    }
    switch (mode) {
    case AutonomyMode::yolo:
        stand(entries, isAllowOrAsk, Standing::yoloRunsAll);
        return byMode(Decision::automatic, "yolo_auto");
    case AutonomyMode::panic:
        stand(entries, isAllowOrAsk, Standing::panicHoldsAll);
        break;
    case AutonomyMode::copilote:
        if (Trace::Entry* winner = pick(entries, isAllowOrAsk))
            return byAllowOrAsk(*winner, capReached);
        break;
    }
    return bySlider(effect, mode);
}

} // namespace

ActionPolicy::Outcome ActionPolicy::decide(std::string_view toolID, Effect effect, const Args& args, AutonomyMode mode,
    std::span<const PolicyRule> rules, std::int64_t mutationsToday, std::int64_t dailyCap, Trace* trace)
{
    std::vector<Trace::Entry> entries = fitAll(toolID, args, rules);
    Outcome outcome = judge(entries, effect, mode, mutationsToday >= dailyCap);
    if (trace != nullptr)
        trace->entries = std::move(entries);
    return outcome;
}

bool ActionPolicy::defaultRequiresApproval(Effect effect, AutonomyMode mode)
{
    switch (effect) {
    case Effect::read:
        return false;
    case Effect::create:
        return mode == AutonomyMode::panic;
    case Effect::destructive:
        return mode != AutonomyMode::yolo;
    }
    return true;
}

std::string_view ActionPolicy::name(Decision decision)
{
    switch (decision) {
    case Decision::deny:
        return "deny";
    case Decision::ask:
        return "ask";
    case Decision::automatic:
        return "auto";
    }
    return {};
}

} // namespace mervo
