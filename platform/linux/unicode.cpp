#include "platform/unicode.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <memory>
#include <utf8proc.h>

namespace mervo::platform {

namespace {

constexpr char kReplacement[] = "\xEF\xBF\xBD";

bool isAscii(std::string_view text) noexcept
{
    return std::all_of(text.begin(), text.end(), [](unsigned char byte) { return byte < 0x80; });
}

char asciiLower(char letter) noexcept
{
    return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
}

std::size_t validPrefix(std::string_view text) noexcept
{
    std::size_t length = 0;
    while (length < text.size()) {
        const CodePoint point = firstCodePoint(text.substr(length));
        if (!point.valid)
            break;
        length += point.length;
    }
    return length;
}

/// Appends the folded form of a well-formed text; the text itself should memory be short.
void appendFolded(std::string& result, std::string_view text)
{
    constexpr auto kOptions = static_cast<utf8proc_option_t>(UTF8PROC_STABLE | UTF8PROC_COMPOSE | UTF8PROC_CASEFOLD);
    utf8proc_uint8_t* mapped = nullptr;
    const auto length = utf8proc_map(reinterpret_cast<const utf8proc_uint8_t*>(text.data()),
        static_cast<utf8proc_ssize_t>(text.size()), &mapped, kOptions);
    const std::unique_ptr<utf8proc_uint8_t, decltype(&std::free)> owner(mapped, &std::free);
    if (length < 0)
        result += text;
    else
        result.append(reinterpret_cast<const char*>(mapped), static_cast<std::size_t>(length));
}

/// Single characters of Latin, Greek and Cyrillic, kana and Han: neither they nor their folded forms join with a
/// neighbour, so a text of nothing else is folded character by character.
bool foldsAlone(char32_t point) noexcept
{
    return point < 0x300 || (point >= 0x370 && point < 0x483) || (point >= 0x48A && point < 0x530)
        || (point >= 0x2010 && point <= 0x2027) || (point >= 0x3041 && point <= 0x3096)
        || (point >= 0x30A1 && point <= 0x30FA) || (point >= 0x3400 && point <= 0x9FFF);
}

void appendFoldedCharacter(std::string& result, std::string_view character, char32_t point)
{
    struct Folded {
        char bytes[7];
        unsigned char length; // 0: not known yet
    };
    constexpr char32_t kAlphabetsEnd = 0x530; // what foldsAlone() accepts above it is its own folded form
    constinit static thread_local std::array<Folded, kAlphabetsEnd> known{};
    if (point < 0x80) {
        result += asciiLower(static_cast<char>(point));
        return;
    }
    if (point >= kAlphabetsEnd) {
        result += character;
        return;
    }
    Folded& folded = known[point];
    if (folded.length == 0) {
        std::string bytes;
        appendFolded(bytes, character);
        folded.length = static_cast<unsigned char>(bytes.copy(folded.bytes, sizeof folded.bytes));
    }
    result.append(folded.bytes, folded.length);
}

/// False, and nothing appended, when a part of the text does not fold alone or is ill-formed.
bool appendFoldedAlone(std::string& result, std::string_view text)
{
    const std::size_t start = result.size();
    while (!text.empty()) {
        const CodePoint point = firstCodePoint(text);
        if (!point.valid || !foldsAlone(point.value)) {
            result.resize(start);
            return false;
        }
        appendFoldedCharacter(result, text.substr(0, point.length), point.value);
        text.remove_prefix(point.length);
    }
    return true;
}

} // namespace

CodePoint firstCodePoint(std::string_view text) noexcept
{
    if (text.empty())
        return {};
    const auto byte = static_cast<unsigned char>(text.front());
    if (byte < 0x80)
        return {byte, 1, true};
    utf8proc_int32_t value = 0;
    const auto length = utf8proc_iterate(reinterpret_cast<const utf8proc_uint8_t*>(text.data()),
        static_cast<utf8proc_ssize_t>(std::min<std::size_t>(text.size(), 4)), &value);
    if (length <= 0)
        return {byte, 1, false};
    return {static_cast<char32_t>(value), static_cast<std::size_t>(length), true};
}

std::string foldCase(std::string_view text)
{
    std::string result;
    result.reserve(text.size());
    if (isAscii(text)) {
        std::transform(text.begin(), text.end(), std::back_inserter(result), asciiLower);
        return result;
    }
    if (appendFoldedAlone(result, text))
        return result;
    while (!text.empty()) {
        const std::size_t length = validPrefix(text);
        if (length > 0)
            appendFolded(result, text.substr(0, length));
        text.remove_prefix(length);
        if (!text.empty()) {
            result += text.front();
            text.remove_prefix(1);
        }
    }
    return result;
}

bool isValidUtf8(std::string_view text) noexcept
{
    return validPrefix(text) == text.size();
}

std::string withValidUtf8(std::string_view text)
{
    std::string result;
    result.reserve(text.size());
    while (!text.empty()) {
        const std::size_t length = validPrefix(text);
        result += text.substr(0, length);
        text.remove_prefix(length);
        if (!text.empty()) {
            result += kReplacement;
            text.remove_prefix(1);
        }
    }
    return result;
}

std::size_t countCharacters(std::string_view text) noexcept
{
    std::size_t count = 0;
    while (!text.empty()) {
        text.remove_prefix(firstCharacterLength(text));
        ++count;
    }
    return count;
}

std::size_t firstCharacterLength(std::string_view text) noexcept
{
    CodePoint previous = firstCodePoint(text);
    std::size_t length = previous.length;
    utf8proc_int32_t state = 0;
    while (previous.valid && length < text.size()) {
        const CodePoint next = firstCodePoint(text.substr(length));
        if (previous.value < 0x80 && next.value < 0x80 && !(previous.value == '\r' && next.value == '\n'))
            break;
        if (!next.valid
            || utf8proc_grapheme_break_stateful(
                static_cast<utf8proc_int32_t>(previous.value), static_cast<utf8proc_int32_t>(next.value), &state))
            break;
        length += next.length;
        previous = next;
    }
    return length;
}

} // namespace mervo::platform
