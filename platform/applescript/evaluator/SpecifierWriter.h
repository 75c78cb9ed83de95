#pragma once

#include "platform/applescript/evaluator/Elements.h"
#include "platform/applescript/syntax/SyntaxTree.h"

#include <functional>
#include <string>

namespace mervo::applescript {

/// Writes references as messages show them: as in the source, but with their keys as values, and an owner that is no
/// reference as its value: `letter 9 of box "INBOX" of account "Home"`, `item 5 of {1, 2}`.
class SpecifierWriter {
public:
    using ValueOf = std::function<Value(const VariableUse&)>; // none for a variable that is not defined
    using KeysOf = std::function<Keys(const ElementExpr&)>;

    /// Both functions and the source must outlive the writer.
    SpecifierWriter(const std::string& source, ValueOf valueOf, KeysOf keysOf);

    /// The part alone, without what it belongs to: `item 5`, `text 1 thru 9`, `mailbox "X"`.
    std::string part(const ElementExpr& expr, const Keys& keys) const;
    std::string whole(const PropertyExpr& expr, const Value& owner) const;
    std::string whole(const ElementExpr& expr, const Keys& keys, const Value& owner) const;
    std::string whole(const FilterExpr& expr, const Keys& keys, const Value& owner) const;

private:
    std::string chain(const Expr& expr) const;
    std::string ownerOf(const ExprPtr& expr, const Value& owner) const;
    std::string condition(const Expr& expr) const;

    const std::string& source_;
    ValueOf valueOf_;
    KeysOf keysOf_;
};

} // namespace mervo::applescript
