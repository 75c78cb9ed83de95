// A row of the rules as bytes: pattern, account and conditions, one to a line, against a call made of the same bytes.

#include "core/foundation/StringMap.h"
#include "core/foundation/Text.h"
#include "core/policy/ActionPolicy.h"

#include <cstdint>
#include <cstdlib>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace mervo;
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    const auto lines = Text::split(bytes, '\n');
    PolicyRule rule;
    rule.id = "R";
    rule.toolPattern = lines[0];
    if (lines.size() > 1)
        rule.account = lines[1];
    if (lines.size() > 2)
        rule.match = StringMap::decode<decltype(rule.match)>(lines[2]).value_or(decltype(rule.match){});
    if (const auto json = StringMap::encode(rule.match);
        json && StringMap::decode<decltype(rule.match)>(*json) != rule.match)
        std::abort();

    Args args(rule.match.begin(), rule.match.end());
    if (rule.account && !rule.account->empty())
        args["account"] = *rule.account; // in the place of a condition of that name
    const std::vector<PolicyRule> rules{rule};
    ActionPolicy::Trace trace;
    const auto outcome =
        ActionPolicy::decide(rule.toolPattern, Effect::create, args, AutonomyMode::copilote, rules, 0, 1, &trace);
    // Every condition is met by the very text that it asks for; only a condition on the account can miss the scope's.
    const auto fit = trace.entries.at(0).fit;
    const auto mismatch = fit.mismatch;
    if (mismatch != PolicyRule::Mismatch::none && mismatch != PolicyRule::Mismatch::tool && fit.argument != "account")
        std::abort();
    if (outcome.ruleID.has_value() != (mismatch == PolicyRule::Mismatch::none))
        std::abort();
    return 0;
}
