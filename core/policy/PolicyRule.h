#pragma once

#include "core/policy/Tool.h"

#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace mervo {

/// A call's arguments as rules compare them: each is folded at most once, however many rules ask. Refers to the
/// arguments; not for several threads at once.
class FoldedArgs {
public:
    explicit FoldedArgs(const Args& args)
        : args_(args)
    {
    }
    /// The folded value, null when there is no such argument.
    const std::string* find(std::string_view key) const;

private:
    const Args& args_;
    mutable std::map<std::string_view, std::string> folded_;
};

/// The owner's answer for particular actions. A plain value, identified by `id`.
struct PolicyRule {
    enum class Decision { allow, deny, ask };
    enum class Source { user, learned }; ///< its origin; without effect on matching or ranking

    std::string id;
    bool enabled = true;
    std::optional<std::string> account; ///< what the call's `account` must equal, ignoring case; empty means any
    std::string toolPattern = "*"; ///< "*", a family "mail.*", or one exact id; case-sensitive
    std::map<std::string, std::string> match; ///< every argument named must contain the text, ignoring case
    Decision decision = Decision::ask;
    Source source = Source::user;
    std::string createdAt;

    bool operator==(const PolicyRule&) const = default;

    /// A compact JSON object under the names of the fields, an absent one left out; and back. Decoding gives nothing
    /// when a field is missing that must be there, has another type, or holds an unknown word.
    std::string encode() const;
    static std::optional<PolicyRule> decode(std::string_view json);

    /// Why a rule does not apply to a call; the first failed condition, in this order.
    enum class Mismatch { none, disabled, tool, account, missingArgument, argumentText };
    struct Fit {
        Mismatch mismatch = Mismatch::none;
        std::string_view argument; ///< the key of the failed condition; lives as long as the rule
    };
    Fit fit(std::string_view toolID, const FoldedArgs& args) const;
    Fit fit(std::string_view toolID, const Args& args) const { return fit(toolID, FoldedArgs(args)); }

    bool matches(std::string_view toolID, const Args& args) const;

    /// The number of conditions in `match`, plus 1 for an account, plus 1 for any pattern but "*".
    int specificity() const;
};

std::string_view rawValue(PolicyRule::Decision decision);
std::string_view rawValue(PolicyRule::Source source);

} // namespace mervo
