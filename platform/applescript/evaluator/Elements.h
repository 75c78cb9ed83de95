#pragma once

#include "platform/applescript/evaluator/TextSettings.h"
#include "platform/applescript/syntax/SyntaxTree.h"

#include <cstddef>
#include <optional>

/// Elements by position, and the elements of the language's own values: texts and lists. Functions of values; the keys
/// of a reference have been evaluated.
namespace mervo::applescript {

/// The key of `item 2`, `box "INBOX"` or `letter id 7`, or both ends of a range. None where there is none.
struct Keys {
    Value first = {};
    Value last = {};
};

/// Positions next to each other, counted from 0.
struct Positions {
    std::size_t first = 0;
    std::size_t count = 0;
};

/// The position from 0 that a key means, counted from 1, or from -1 backwards; none when it is outside. `middle` and
/// `some` need no key.
std::optional<std::size_t> positionOf(ElementExpr::Form form, const Value& key, std::size_t count);
/// The positions from one key to the other, whichever comes first.
std::optional<Positions> rangeOf(const Keys& keys, std::size_t count);

/// What a reference means in a list or in a text: one element, or a list of them for `every` and a range. Without
/// such an element: nothing, or for a text none, which a list could hold. `text 1 thru 4` is a cut (see below).
std::optional<Value> elementOfList(const Value& owner, const ElementExpr& expr, const Keys& keys);
Value elementOfText(const Value& owner, const ElementExpr& expr, const Keys& keys, TextSettings& settings);

/// None for a class that texts do not have.
std::optional<TextUnit> unitOf(LanguageClass which);
/// From the beginning of one range to the end of the other.
Value cutOf(const Value& text, TextRange one, TextRange other);

/// `character id 10`, `text id {72, 105}`
Value textOfCodePoints(const Value& points);

} // namespace mervo::applescript
