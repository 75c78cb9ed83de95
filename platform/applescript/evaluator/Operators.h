#pragma once

#include "platform/applescript/evaluator/TextSettings.h"
#include "platform/applescript/syntax/SyntaxTree.h"

#include <string_view>

/// The operators, as functions of values that have been looked up.
namespace mervo::applescript {

/// Any operator of two operands but `=` and `≠`, which areEqual answers. The right operand becomes what the left one
/// is.
Value applied(BinaryOp op, const Value& left, const Value& right, const TextSettings& texts);

Value negated(const Value& value);

/// Who else may hold the list on the left of `&`.
enum class LeftOperand { shared, madeHere };

/// `left & right`: text on the left makes text, two records a record, anything else a list. A list that was made here
/// is appended to in place, so that a chain takes linear time.
Value concatenated(const Value& left, const Value& right, std::string_view joiner, LeftOperand who);

} // namespace mervo::applescript
