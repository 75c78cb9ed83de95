#include "platform/unicode.h"

#include "platform/ascii.h"

#include <algorithm>
#include <utf8proc.h>

namespace mervo::platform {

namespace {

constexpr char kReplacement[] = "\xEF\xBF\xBD";

std::size_t validPrefix(std::string_view text) noexcept
{
    std::size_t length = ascii::prefixLength(text);
    while (length < text.size()) {
        const CodePoint point = firstCodePoint(text.substr(length));
        if (!point.valid)
            break;
        length += point.length;
        length += ascii::prefixLength(text.substr(length));
    }
    return length;
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
