#pragma once

#include "platform/applescript/values/Value.h"

#include <string>

namespace mervo::applescript {

class Object;

/// Up to twelve significant digits: `3.0`, `1.572864E+6`, `1.0E-3`.
std::string realText(double value);

/// As results and `log` show a value: texts bare, lists without braces.
std::string displayForm(const Value& value);

/// As a script would write it: texts in quotes, lists in braces.
std::string sourceForm(const Value& value);

/// The source form for an error message: a value that is long is cut, and an ellipsis says so.
std::string quoted(const Value& value);

/// `message id 7 of mailbox "INBOX"`, without the application.
std::string specifierOf(const Object& object);

/// The name of a value's class, as `class of` gives it.
Symbol classOf(const Value& value);

} // namespace mervo::applescript
