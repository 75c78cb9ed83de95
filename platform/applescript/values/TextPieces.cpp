#include "platform/applescript/values/TextPieces.h"

#include "platform/ascii.h"
#include "platform/unicode.h"

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <utf8proc.h>

namespace mervo::applescript {

namespace {

bool isWordPart(std::int32_t point)
{
    if (point < 0x80)
        return std::isalnum(static_cast<int>(point)) || point == '_';
    switch (utf8proc_category(point)) {
    case UTF8PROC_CATEGORY_LU:
    case UTF8PROC_CATEGORY_LL:
    case UTF8PROC_CATEGORY_LT:
    case UTF8PROC_CATEGORY_LM:
    case UTF8PROC_CATEGORY_LO:
    case UTF8PROC_CATEGORY_MN:
    case UTF8PROC_CATEGORY_MC:
    case UTF8PROC_CATEGORY_ND:
    case UTF8PROC_CATEGORY_NL:
        return true;
    default:
        return false;
    }
}

} // namespace

std::vector<TextRange> wordsOf(std::string_view text)
{
    std::vector<TextRange> words;
    bool isInside = false;
    for (std::size_t at = 0; at < text.size();) {
        const platform::CodePoint point = platform::firstCodePoint(text.substr(at));
        const std::size_t next = at + std::max<std::size_t>(point.length, 1);
        bool belongs = point.valid && isWordPart(static_cast<std::int32_t>(point.value));
        if (!belongs && isInside && next < text.size()) {
            const auto after = static_cast<std::int32_t>(platform::firstCodePoint(text.substr(next)).value);
            const bool joinsLetters = point.value == '\'' || point.value == 0x2019 || point.value == '.';
            const bool joinsDigits =
                (point.value == ',' || point.value == '.') && platform::ascii::isDigit(text[at - 1]);
            belongs = (joinsDigits && after >= '0' && after <= '9')
                || (joinsLetters && isWordPart(after) && !platform::ascii::isDigit(text[at - 1]));
        }
        if (belongs && !isInside) {
            words.push_back({at, next});
        } else if (belongs) {
            words.back().end = next;
        }
        isInside = belongs;
        at = next;
    }
    return words;
}

std::vector<TextRange> paragraphsOf(std::string_view text)
{
    std::vector<TextRange> paragraphs;
    std::size_t start = 0;
    for (std::size_t at = 0; at < text.size(); ++at) {
        if (text[at] != '\n' && text[at] != '\r')
            continue;
        paragraphs.push_back({start, at});
        if (text[at] == '\r' && at + 1 < text.size() && text[at + 1] == '\n')
            ++at;
        start = at + 1;
    }
    if (!text.empty())
        paragraphs.push_back({start, text.size()});
    return paragraphs;
}

std::vector<TextRange> charactersOf(std::string_view text)
{
    std::vector<TextRange> characters;
    std::string_view rest = text;
    while (!rest.empty()) {
        const std::size_t start = text.size() - rest.size();
        rest.remove_prefix(platform::firstCharacterLength(rest));
        characters.push_back({start, text.size() - rest.size()});
    }
    return characters;
}

std::vector<TextRange> itemsBetween(const std::vector<TextRange>& delimiters, std::size_t length)
{
    std::vector<TextRange> items;
    std::size_t start = 0;
    for (const TextRange& delimiter : delimiters) {
        items.push_back({start, delimiter.start});
        start = delimiter.end;
    }
    items.push_back({start, length});
    return items;
}

} // namespace mervo::applescript
