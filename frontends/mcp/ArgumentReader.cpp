#include "frontends/mcp/ArgumentReader.h"

#include "core/foundation/Text.h"
#include "frontends/mcp/Reply.h"

#include <fmt/format.h>

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <utility>

namespace mervo::mcp::ArgumentReader {

namespace {

using Kind = json::Value::Kind;

constexpr double kExactlyWhole = 9007199254740992.0; // 2^53: every whole number up to it is itself as a double

std::string realText(const std::string& written)
{
    const double value = std::strtod(written.c_str(), nullptr);
    if (value == std::trunc(value) && std::abs(value) <= kExactlyWhole)
        return std::to_string(static_cast<std::int64_t>(value));
    return written;
}

Refusal refusal(std::string_view name, std::string_view what, std::string_view remedy)
{
    return {fmt::format("The argument \"{}\" {}; {}.", Text::visibleLine(Reply::echo(name)), what, remedy)};
}

} // namespace

std::variant<Args, Refusal> read(const json::Value& arguments)
{
    Args args;
    for (auto& [name, value] : arguments.members) {
        if (value.is(Kind::list) || value.is(Kind::object))
            return refusal(name, value.is(Kind::list) ? "is a list" : "is an object", "give it as one text");
        if (value.missing()) {
            args.erase(name);
            continue;
        }
        if (name.find('\0') != std::string::npos || value.text.find('\0') != std::string::npos)
            return refusal(name, "contains a NUL character", "leave it out");
        args.insert_or_assign(std::move(name), value.is(Kind::real) ? realText(value.text) : std::move(value.text));
    }
    return args;
}

} // namespace mervo::mcp::ArgumentReader
