#include "core/foundation/Text.h"

#include "platform/unicode.h"

#include <algorithm>
#include <array>
#include <fmt/format.h>

namespace mervo {

namespace {

struct Range {
    char32_t first;
    char32_t last;
};

/// In rising order: General_Category Cc, Zl and Zp, Default_Ignorable_Code_Point with what Unicode has reserved for it,
/// and the interlinear annotation characters.
constexpr std::array kHidden{
    Range{0x0000, 0x001F}, // Cc: C0 controls
    Range{0x007F, 0x009F}, // Cc: delete and C1 controls
    Range{0x00AD, 0x00AD}, // soft hyphen
    Range{0x034F, 0x034F}, // combining grapheme joiner
    Range{0x061C, 0x061C}, // Arabic letter mark
    Range{0x115F, 0x1160}, // Hangul fillers
    Range{0x17B4, 0x17B5}, // Khmer inherent vowels
    Range{0x180B, 0x180F}, // Mongolian selectors and vowel separator
    Range{0x200B, 0x200F}, // zero-width characters, direction marks
    Range{0x2028, 0x202E}, // Zl, Zp: line and paragraph separators; embeddings and overrides
    Range{0x2060, 0x206F}, // word joiner, invisible operators, isolates, deprecated formatting
    Range{0x3164, 0x3164}, // Hangul filler
    Range{0xFE00, 0xFE0F}, // variation selectors
    Range{0xFEFF, 0xFEFF}, // byte order mark
    Range{0xFFA0, 0xFFA0}, // half-width Hangul filler
    Range{0xFFF0, 0xFFFB}, // reserved; interlinear annotations
    Range{0x1BCA0, 0x1BCA3}, // shorthand format controls
    Range{0x1D173, 0x1D17A}, // musical format controls
    Range{0xE0000, 0xE0FFF}, // tags and more variation selectors
};

/// `kept` are hidden characters that stay as they are.
std::string shown(std::string_view text, std::string_view kept = {})
{
    std::string result;
    result.reserve(text.size());
    while (!text.empty()) {
        const platform::CodePoint point = platform::firstCodePoint(text);
        if (!point.valid) {
            result += fmt::format("<0x{:02X}>", static_cast<unsigned>(point.value));
        } else if (Text::isHidden(point.value) && kept.find(text.front()) == std::string_view::npos) {
            result += fmt::format("<U+{:04X}>", static_cast<unsigned>(point.value));
        } else {
            result += text.substr(0, point.length);
        }
        text.remove_prefix(point.length);
    }
    return result;
}

} // namespace

bool Text::isHidden(char32_t point) noexcept
{
    const auto* const range = std::lower_bound(
        kHidden.begin(), kHidden.end(), point, [](const Range& entry, char32_t value) { return entry.last < value; });
    return range != kHidden.end() && point >= range->first;
}

std::string Text::visible(std::string_view text)
{
    return shown(text, "\n\t");
}

std::string Text::visibleLine(std::string_view text)
{
    return shown(text);
}

} // namespace mervo
