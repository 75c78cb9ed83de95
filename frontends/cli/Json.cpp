#include "frontends/cli/Json.h"

#include "core/foundation/Json.h"
#include "core/foundation/Text.h"
#include "platform/unicode.h"

#include <cstdint>
#include <fmt/format.h>
#include <nlohmann/json.hpp>

namespace mervo::cli {

namespace {

std::string escaped(char32_t point)
{
    const auto value = static_cast<std::uint32_t>(point);
    if (value < 0x10000)
        return fmt::format("\\u{:04x}", value);
    const std::uint32_t offset = value - 0x10000;
    return fmt::format("\\u{:04x}\\u{:04x}", 0xD800 + (offset >> 10U), 0xDC00 + (offset & 0x3FFU));
}

} // namespace

std::string withEscapes(std::string_view compactJson)
{
    std::string result;
    result.reserve(compactJson.size());
    while (!compactJson.empty()) {
        const platform::CodePoint point = platform::firstCodePoint(compactJson);
        if (point.valid && Text::isHidden(point.value)) {
            result += escaped(point.value);
        } else {
            result += compactJson.substr(0, point.length);
        }
        compactJson.remove_prefix(point.length);
    }
    return result;
}

std::string jsonLine(const nlohmann::ordered_json& value)
{
    return withEscapes(compactJson(value)) + "\n";
}

} // namespace mervo::cli
