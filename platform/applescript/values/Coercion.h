#pragma once

#include "platform/applescript/values/Text.h"
#include "platform/applescript/values/Value.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace mervo::applescript {

/// The classes that `as` can name.
enum class TargetClass {
    integer,
    real,
    number,
    text,
    boolean,
    list,
    record,
    date,
    classTerm,
    constant,
    file,
    item, // and `anything`: whatever it is
};

/// `value as target`. Lists become texts with `delimiter` between the items. Throws ScriptError -1700 when it cannot.
/// References are followed; an object of an application may have a conversion of its own.
Value coerce(const Value& value, TargetClass target, std::string_view delimiter = {});

/// The single coercions, also for object models that take a value from a script.
Ref<Text> toText(const Value& value, std::string_view delimiter = {});
std::string toString(const Value& value);
bool toBoolean(const Value& value);
/// Any number, rounded to the nearest whole one, half to even.
std::int64_t toInteger(const Value& value);
double toReal(const Value& value);
Value toNumber(const Value& value); // an integer or a real, as the value looks
Date toDate(const Value& value);
/// A path: of a file, of an alias, or a text that is one. `file:///` addresses are not paths.
std::string toPath(const Value& value);

} // namespace mervo::applescript
