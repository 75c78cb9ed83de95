#pragma once

#include "core/policy/Tool.h"
#include "frontends/mcp/Json.h"

#include <string>
#include <variant>

/// A call's arguments as the tools take them: texts.
namespace mervo::mcp::ArgumentReader {

/// Why the arguments cannot be taken, as a sentence that names the argument and is for the model to read.
struct Refusal {
    std::string text;
};

/// Texts stand as they are. A number or a boolean is taken as its text: a whole number without a fraction or exponent
/// (5.0 is "5", 1e3 is "1000"), any other as it was written. A null is an argument that was not given. A list, an
/// object, and a text with a NUL character, which no program can be given whole, are refused.
/// `arguments` is an object, or missing for none. Keys that a tool does not know are passed on.
std::variant<Args, Refusal> read(const json::Value& arguments);

} // namespace mervo::mcp::ArgumentReader
