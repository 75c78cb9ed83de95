#include "core/policy/PolicyRule.h"

#include "platform/unicode.h"

namespace mervo {

namespace {

constexpr std::string_view kEveryTool = "*";
constexpr std::string_view kFamilyEnding = ".*";

bool patternMatches(std::string_view pattern, std::string_view toolID)
{
    if (pattern == kEveryTool)
        return true;
    if (pattern.ends_with(kFamilyEnding))
        return toolID.starts_with(pattern.substr(0, pattern.size() - 1));
    return pattern == toolID;
}

bool hasAccount(const PolicyRule& rule)
{
    return rule.account && !rule.account->empty();
}

} // namespace

const std::string* FoldedArgs::find(std::string_view key) const
{
    if (const auto known = folded_.find(key); known != folded_.end())
        return &known->second;
    const auto argument = args_.find(key);
    if (argument == args_.end())
        return nullptr;
    return &folded_.emplace(argument->first, platform::foldCase(argument->second)).first->second;
}

PolicyRule::Fit PolicyRule::fit(std::string_view toolID, const FoldedArgs& args) const
{
    if (!enabled)
        return {Mismatch::disabled, {}};
    if (!patternMatches(toolPattern, toolID))
        return {Mismatch::tool, {}};
    if (hasAccount(*this)) {
        const std::string* given = args.find("account");
        if (given == nullptr || *given != platform::foldCase(*account))
            return {Mismatch::account, {}};
    }
    for (const auto& [key, part] : match) {
        const std::string* value = args.find(key);
        if (value == nullptr)
            return {Mismatch::missingArgument, key};
        if (value->find(platform::foldCase(part)) == std::string::npos)
            return {Mismatch::argumentText, key};
    }
    return {};
}

bool PolicyRule::matches(std::string_view toolID, const Args& args) const
{
    return fit(toolID, args).mismatch == Mismatch::none;
}

int PolicyRule::specificity() const
{
    return static_cast<int>(match.size()) + (hasAccount(*this) ? 1 : 0) + (toolPattern != kEveryTool ? 1 : 0);
}

std::string_view rawValue(PolicyRule::Decision decision)
{
    switch (decision) {
    case PolicyRule::Decision::allow:
        return "allow";
    case PolicyRule::Decision::deny:
        return "deny";
    case PolicyRule::Decision::ask:
        return "ask";
    }
    return {};
}

std::string_view rawValue(PolicyRule::Source source)
{
    switch (source) {
    case PolicyRule::Source::user:
        return "user";
    case PolicyRule::Source::learned:
        return "learned";
    }
    return {};
}

} // namespace mervo
