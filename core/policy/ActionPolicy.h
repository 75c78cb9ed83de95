#pragma once

#include "core/foundation/AutonomyMode.h"
#include "core/policy/Effect.h"
#include "core/policy/PolicyRule.h"
#include "core/policy/Tool.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

/// The gate's judgement: may a call run now, must it wait for a person, or is it refused?
///
/// The only place in the program that judges. The answer depends on the arguments and on nothing else: no clock, no
/// disk, no earlier call. Any thread may ask.
namespace mervo::ActionPolicy {

/// In memory only; strictest first.
enum class Decision { deny, ask, automatic };

struct Outcome {
    Decision decision = Decision::deny;
    std::optional<std::string> ruleID; ///< the rule that decided; absent when the mode did
    std::string reason; ///< machine-readable; stored in the audit trail and searched there

    bool operator==(const Outcome&) const = default;
};

/// What became of one rule in a decision, and why it did not decide.
enum class Standing {
    won, ///< this rule decided
    cappedWinner, ///< an allow rule that won, but the day's cap is reached
    doesNotMatch, ///< see the fit
    outrankedByDeny, ///< a deny rule matched; it always wins
    lessSpecific, ///< a more specific rule of its group won
    olderTie, ///< as specific as the winner, but later in the list: the newer rule wins
    readsAlwaysRun, ///< allow and ask rules have no power over a read
    yoloRunsAll, ///< allow and ask rules have no power in yolo
    panicHoldsAll ///< allow and ask rules have no power in panic
};

/// What `decide` saw: one entry for each rule, in store order.
struct Trace {
    struct Entry {
        const PolicyRule* rule = nullptr;
        PolicyRule::Fit fit;
        Standing standing = Standing::doesNotMatch;
    };
    std::vector<Entry> entries;
};

/// `rules` stand in store order, newest first. With a `trace`, says there what became of each rule; the verdict is
/// found on the same path with and without one.
[[nodiscard]] Outcome decide(std::string_view toolID, Effect effect, const Args& args, AutonomyMode mode,
    std::span<const PolicyRule> rules, std::int64_t mutationsToday, std::int64_t dailyCap, Trace* trace = nullptr);

/// What the slider alone says of an effect.
[[nodiscard]] bool defaultRequiresApproval(Effect effect, AutonomyMode mode);

std::string_view name(Decision decision); ///< "deny", "ask", "auto"

} // namespace mervo::ActionPolicy
