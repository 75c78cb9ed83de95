#include "frontends/cli/Explanation.h"

#include "core/foundation/Text.h"
#include "platform/unicode.h"

#include <algorithm>
#include <fmt/format.h>
#include <nlohmann/json.hpp>

namespace mervo::cli {

namespace {

using ActionPolicy::Decision;
using ActionPolicy::Standing;
using Entry = ActionPolicy::Trace::Entry;

constexpr std::size_t kValueLimit = 80; ///< characters of a value in a sentence

std::string inQuotes(std::string_view text)
{
    const std::size_t length = platform::countCharacters(text);
    const std::string shown = Text::visibleLine(Text::cut(text, kValueLimit));
    return length > kValueLimit ? fmt::format("\"{}\" ({} characters)", shown, length) : fmt::format("\"{}\"", shown);
}

std::string_view argument(const Args& args, std::string_view key)
{
    const auto found = args.find(key);
    return found == args.end() ? std::string_view() : std::string_view(found->second);
}

bool hasAccount(const PolicyRule& rule)
{
    return rule.account && !rule.account->empty();
}

std::string verdict(const Call& call, Decision decision)
{
    switch (decision) {
    case Decision::automatic:
        return fmt::format("{} would run at once.", call.tool->id);
    case Decision::ask:
        return fmt::format("{} would wait for the owner's approval.", call.tool->id);
    case Decision::deny:
        return fmt::format("{} would be refused.", call.tool->id);
    }
    return {};
}

std::string whyNoMatch(const Call& call, const PolicyRule& rule, const PolicyRule::Fit& fit)
{
    using enum PolicyRule::Mismatch;
    switch (fit.mismatch) {
    case none:
        return "it matches";
    case disabled:
        return "it is switched off";
    case tool:
        return fmt::format("{} is none of the tools {}", call.tool->id, inQuotes(rule.toolPattern));
    case account: {
        const std::string_view given = argument(call.args, "account");
        return given.empty() ? std::string("the call names no account")
                             : fmt::format("the call's account is {}", inQuotes(given));
    }
    case missingArgument:
        return fmt::format("the call has no argument {}", inQuotes(fit.argument));
    case argumentText:
        return fmt::format("the argument {} is {}, which does not contain {}", inQuotes(fit.argument),
            inQuotes(argument(call.args, fit.argument)), inQuotes(rule.match.at(std::string(fit.argument))));
    }
    return {};
}

std::string whyWon(const PolicyRule& rule)
{
    switch (rule.decision) {
    case PolicyRule::Decision::deny:
        return "settles it: a deny rule that matches wins at every level";
    case PolicyRule::Decision::allow:
    case PolicyRule::Decision::ask:
        return "settles it: of the allow and ask rules that match, it is the most specific, or the newest of those";
    }
    return {};
}

/// The rule that settled the verdict; empty when none did.
const PolicyRule* winner(const HarnessRunner::Explanation& explanation)
{
    for (const Entry& entry : explanation.trace.entries) {
        if (entry.standing == Standing::won || entry.standing == Standing::cappedWinner)
            return entry.rule;
    }
    return nullptr;
}

std::string why(const Call& call, const HarnessRunner::Explanation& explanation, const Entry& entry)
{
    const PolicyRule& rule = *entry.rule;
    const PolicyRule* const best = winner(explanation);
    const std::string other = best != nullptr ? "rule " + Text::visibleLine(best->id) : "another rule";
    switch (entry.standing) {
    case Standing::won:
        return whyWon(rule);
    case Standing::cappedWinner:
        return fmt::format("settles it, but {} of the day's {} unattended actions have run, so the call waits",
            explanation.mutationsToday, explanation.dailyCap);
    case Standing::doesNotMatch:
        return "does not apply: " + whyNoMatch(call, rule, entry.fit);
    case Standing::outrankedByDeny:
        return fmt::format("matches and loses: {} denies, and deny always wins", other);
    case Standing::lessSpecific:
        return fmt::format("matches and loses: {} is more specific ({} against {})", other,
            best != nullptr ? best->specificity() : 0, rule.specificity());
    case Standing::olderTie:
        return fmt::format("matches and loses: {} is as specific and newer", other);
    case Standing::readsAlwaysRun:
        return "matches and has no power: a read runs unless a deny rule matches";
    case Standing::yoloRunsAll:
        return "matches and has no power: in yolo everything runs unless a deny rule matches";
    case Standing::panicHoldsAll:
        return "matches and has no power: in panic every change waits unless a deny rule matches";
    }
    return {};
}

/// deny mail.* where account is "Work" and to contains "acme"
std::string describe(const PolicyRule& rule)
{
    std::vector<std::string> conditions;
    if (hasAccount(rule))
        conditions.push_back("account is " + inQuotes(*rule.account));
    for (const auto& [key, part] : rule.match)
        conditions.push_back(fmt::format("{} contains {}", Text::visibleLine(key), inQuotes(part)));
    return fmt::format("{} {}{}{}", rawValue(rule.decision), Text::visibleLine(rule.toolPattern),
        conditions.empty() ? "" : " where ", Text::join(conditions, " and "));
}

/// What the tool itself refuses never reaches the policy, so there is no verdict to explain.
std::string refusal(const Call& call, const std::string& text)
{
    return fmt::format("{} would be refused by the tool itself, whatever the level and the rules: {}\n", call.tool->id,
        Text::visibleLine(text));
}

std::string posture(const Call& call, const HarnessRunner::Explanation& explanation)
{
    const std::string today = explanation.countUnread.empty()
        ? fmt::format("{} of {} actions that allow rules may let run unattended", explanation.mutationsToday,
            explanation.dailyCap)
        : Text::visibleLine(explanation.countUnread);
    return fmt::format("Effect: {}\nAutonomy: {}. {}\nToday: {}\n", rawValue(call.tool->effect),
        rawValue(explanation.mode), description(explanation.mode), today);
}

std::string headOfRules(const HarnessRunner::Explanation& explanation)
{
    if (!explanation.rulesUnread.empty())
        return fmt::format("Rules: {}\n", Text::visibleLine(explanation.rulesUnread));
    return explanation.trace.entries.empty() ? "Rules: none\n" : "Rules, newest first:\n";
}

nlohmann::ordered_json warnings(const HarnessRunner::Explanation& explanation)
{
    auto sentences = nlohmann::ordered_json::array();
    for (const std::string* sentence : {&explanation.rulesUnread, &explanation.countUnread}) {
        if (!sentence->empty())
            sentences.push_back(*sentence);
    }
    return sentences;
}

std::string notes(const HarnessRunner::Explanation& explanation)
{
    std::string text;
    for (const Remark& remark : explanation.remarks)
        text += fmt::format("Note: {}\n", remark.sentence);
    return text;
}

} // namespace

std::string inWords(const Call& call, const HarnessRunner::Explanation& explanation)
{
    if (explanation.refusal)
        return refusal(call, *explanation.refusal) + notes(explanation);
    std::string text = fmt::format("{}\nReason: {}\n\n{}", verdict(call, explanation.outcome.decision),
        Text::visibleLine(explanation.outcome.reason), posture(call, explanation));
    if (explanation.preview)
        text += fmt::format("Preview: {}\n", Text::visibleLine(*explanation.preview));
    text += notes(explanation);
    text += headOfRules(explanation);
    for (const Entry& entry : explanation.trace.entries) {
        text += fmt::format("  {}  {}\n      {}\n", Text::visibleLine(entry.rule->id), describe(*entry.rule),
            why(call, explanation, entry));
    }
    return text;
}

nlohmann::ordered_json asJson(const Call& call, const HarnessRunner::Explanation& explanation)
{
    nlohmann::ordered_json object{{"tool", call.tool->id}, {"effect", rawValue(call.tool->effect)}};
    for (const Remark& remark : explanation.remarks)
        object["remarks"].push_back(remark.sentence);
    if (explanation.refusal) {
        object["verdict"] = "refused";
        object["refusal"] = *explanation.refusal;
        return object;
    }
    object["verdict"] = ActionPolicy::name(explanation.outcome.decision);
    object["reason"] = explanation.outcome.reason;
    if (explanation.outcome.ruleID)
        object["rule"] = *explanation.outcome.ruleID;
    if (explanation.preview)
        object["preview"] = *explanation.preview;
    object["mode"] = rawValue(explanation.mode);
    object["mutationsToday"] = explanation.mutationsToday;
    object["dailyCap"] = explanation.dailyCap;
    object["rules"] = nlohmann::ordered_json::array();
    for (const Entry& entry : explanation.trace.entries) {
        auto record = nlohmann::ordered_json::parse(entry.rule->encode());
        record["matches"] = entry.standing != Standing::doesNotMatch;
        record["settles"] = entry.standing == Standing::won || entry.standing == Standing::cappedWinner;
        record["why"] = why(call, explanation, entry);
        object["rules"].push_back(std::move(record));
    }
    if (auto sentences = warnings(explanation); !sentences.empty())
        object["warnings"] = std::move(sentences);
    return object;
}

} // namespace mervo::cli
