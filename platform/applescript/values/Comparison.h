#pragma once

#include "platform/applescript/values/TextRules.h"
#include "platform/applescript/values/Value.h"

namespace mervo::applescript {

/// Equality as `=` has it: nothing is coerced, integers and reals compare by value, lists item by item, records by
/// labels in any order, references by what they describe and not by what they lead to.
bool areEqual(const Value& left, const Value& right, const TextRules& rules);

/// A list or record that shares nothing with the original; dates too.
Value copied(const Value& value);

} // namespace mervo::applescript
