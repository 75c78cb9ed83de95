#include "frontends/cli/Json.h"

#include <array>
#include <fmt/format.h>
#include <nlohmann/json.hpp>

namespace mervo::cli {

namespace {

struct Range {
    unsigned first;
    unsigned last;
};

// Below U+0080 JSON itself escapes everything but DEL.
constexpr std::array kEscaped{
    Range{0x7F, 0x9F}, // DEL and the C1 controls
    Range{0xAD, 0xAD}, // soft hyphen
    Range{0x61C, 0x61C}, // Arabic letter mark
    Range{0x180E, 0x180E}, // Mongolian vowel separator
    Range{0x200B, 0x200F}, // zero width, left-to-right and right-to-left marks
    Range{0x2028, 0x202E}, // line and paragraph separators, embeddings and overrides
    Range{0x2060, 0x206F}, // joiner, isolates, deprecated format characters
    Range{0xFEFF, 0xFEFF}, // zero width no-break space
    Range{0xFFF9, 0xFFFB}, // interlinear annotations
};

struct CodePoint {
    unsigned value = 0;
    std::size_t length = 1;
};

/// The code point at the start of well-formed UTF-8; those of four bytes are given as 0.
CodePoint decode(std::string_view text)
{
    const auto byte = [&](std::size_t i) { return static_cast<unsigned>(static_cast<unsigned char>(text[i])); };
    if (byte(0) < 0x80)
        return {byte(0), 1};
    if (byte(0) < 0xE0 && text.size() >= 2)
        return {(byte(0) & 0x1FU) << 6U | (byte(1) & 0x3FU), 2};
    if (byte(0) < 0xF0 && text.size() >= 3)
        return {(byte(0) & 0xFU) << 12U | (byte(1) & 0x3FU) << 6U | (byte(2) & 0x3FU), 3};
    return {0, std::min<std::size_t>(4, text.size())};
}

bool isEscaped(unsigned codePoint)
{
    return std::ranges::any_of(
        kEscaped, [&](const Range& range) { return codePoint >= range.first && codePoint <= range.last; });
}

} // namespace

std::string withEscapes(std::string_view compactJson)
{
    std::string result;
    result.reserve(compactJson.size());
    while (!compactJson.empty()) {
        const CodePoint next = decode(compactJson);
        if (isEscaped(next.value))
            result += fmt::format("\\u{:04x}", next.value);
        else
            result += compactJson.substr(0, next.length);
        compactJson.remove_prefix(next.length);
    }
    return result;
}

std::string jsonLine(const nlohmann::ordered_json& value)
{
    return withEscapes(value.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace)) + "\n";
}

} // namespace mervo::cli
