#pragma once

#include "platform/applescript/evaluator/TextSettings.h"
#include "platform/applescript/syntax/Terms.h"

#include <optional>

/// The properties of the language's own values. Objects of applications have theirs in a dictionary.
namespace mervo::applescript {

/// None: the value has no such property. `name` is the label that a record is asked for.
std::optional<Value> propertyOfValue(
    const Value& owner, LanguageProperty property, Symbol name, const TextSettings& texts);

/// False when the property cannot be set.
bool setDateProperty(Date& date, LanguageProperty property, const Value& value);

} // namespace mervo::applescript
