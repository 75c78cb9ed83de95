#include "core/foundation/Text.h"

#include "platform/ascii.h"
#include "platform/unicode.h"

#include <algorithm>
#include <fmt/format.h>
#include <random>

namespace mervo {

namespace {

namespace ascii = platform::ascii;

constexpr std::size_t kShortIdLength = 8;

bool isWhiteSpace(char32_t point)
{
    return (point >= 0x09 && point <= 0x0D) || point == 0x20 || point == 0x85 || point == 0xA0 || point == 0x1680
        || (point >= 0x2000 && point <= 0x200A) || point == 0x2028 || point == 0x2029 || point == 0x202F
        || point == 0x205F || point == 0x3000;
}

/// The last code point's first byte: at most three continuation bytes back.
std::size_t lastStart(std::string_view text)
{
    std::size_t start = text.size() - 1;
    for (int back = 0; back < 3 && start > 0 && (static_cast<unsigned char>(text[start]) & 0xC0) == 0x80; ++back)
        --start;
    return start;
}

} // namespace

bool Text::equalsIgnoringCase(std::string_view a, std::string_view b)
{
    if (ascii::isAscii(a) && ascii::isAscii(b))
        return ascii::equalsIgnoringCase(a, b);
    return platform::foldCase(a) == platform::foldCase(b);
}

bool Text::containsIgnoringCase(std::string_view text, std::string_view part)
{
    if (ascii::isAscii(text) && ascii::isAscii(part)) {
        const auto equal = [](char a, char b) { return ascii::lower(a) == ascii::lower(b); };
        return part.empty() || std::search(text.begin(), text.end(), part.begin(), part.end(), equal) != text.end();
    }
    return platform::foldCase(text).find(platform::foldCase(part)) != std::string::npos;
}

std::string_view Text::trimmed(std::string_view text)
{
    for (auto first = platform::firstCodePoint(text); first.valid && isWhiteSpace(first.value);
         first = platform::firstCodePoint(text))
        text.remove_prefix(first.length);
    while (!text.empty()) {
        const std::size_t start = lastStart(text);
        const auto last = platform::firstCodePoint(text.substr(start));
        if (!last.valid || !isWhiteSpace(last.value) || start + last.length != text.size())
            break;
        text.remove_suffix(last.length);
    }
    return text;
}

std::string_view Text::firstCharacters(std::string_view text, std::size_t limit)
{
    std::size_t length = 0;
    for (std::size_t count = 0; count < limit && length < text.size(); ++count)
        length += platform::firstCharacterLength(text.substr(length));
    return text.substr(0, length);
}

std::string Text::cut(std::string_view text, std::size_t limit)
{
    std::string result(firstCharacters(text, limit));
    if (result.size() < text.size())
        result += "...";
    return result;
}

std::string Text::shellQuoted(std::string_view text)
{
    std::string word = "'";
    for (const char c : text)
        word += c == '\'' ? "'\\''" : std::string(1, c);
    return word + "'";
}

std::vector<std::string> Text::split(std::string_view text, char separator)
{
    std::vector<std::string> parts;
    for (;;) {
        const std::size_t end = text.find(separator);
        parts.emplace_back(text.substr(0, end));
        if (end == std::string_view::npos)
            return parts;
        text.remove_prefix(end + 1);
    }
}

std::string Text::join(const std::vector<std::string>& parts, std::string_view separator)
{
    std::string result;
    for (const std::string& part : parts) {
        if (&part != &parts.front())
            result += separator;
        result += part;
    }
    return result;
}

std::string Text::newUuid()
{
    std::random_device random;
    const std::uint32_t first = random(), second = random(), third = random(), fourth = random();
    // Version 4 (random) in the third group, the variant's two bits in the fourth.
    return fmt::format("{:08X}-{:04X}-{:04X}-{:04X}-{:04X}{:08X}", first, second >> 16, (second & 0x0FFFU) | 0x4000U,
        (third >> 16 & 0x3FFFU) | 0x8000U, third & 0xFFFFU, fourth);
}

std::string Text::newShortId()
{
    return newUuid().substr(0, kShortIdLength);
}

} // namespace mervo
