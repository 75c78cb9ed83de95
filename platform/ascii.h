#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

/// Letters and digits of ASCII, whatever the locale: for the words of protocols, formats and programs. Texts that
/// people write are compared by foldCase (platform/unicode.h).
namespace mervo::platform::ascii {

constexpr bool isDigit(char c) noexcept
{
    return c >= '0' && c <= '9';
}

constexpr bool isLower(char c) noexcept
{
    return c >= 'a' && c <= 'z';
}

constexpr bool isUpper(char c) noexcept
{
    return c >= 'A' && c <= 'Z';
}

constexpr bool isLetter(char c) noexcept
{
    return isLower(c) || isUpper(c);
}

constexpr char lower(char c) noexcept
{
    return isUpper(c) ? static_cast<char>(c - 'A' + 'a') : c;
}

constexpr char upper(char c) noexcept
{
    return isLower(c) ? static_cast<char>(c - 'a' + 'A') : c;
}

/// How many bytes of ASCII a text begins with.
inline std::size_t prefixLength(std::string_view text) noexcept
{
    constexpr std::uint64_t kNotAscii = 0x8080808080808080U;
    std::size_t length = 0;
    for (std::uint64_t word = 0; text.size() - length >= sizeof word; length += sizeof word) {
        std::memcpy(&word, text.data() + length, sizeof word);
        if ((word & kNotAscii) != 0)
            break;
    }
    while (length < text.size() && static_cast<unsigned char>(text[length]) < 0x80)
        ++length;
    return length;
}

/// True when every byte is one of ASCII.
inline bool isAscii(std::string_view text) noexcept
{
    return prefixLength(text) == text.size();
}

/// Appends a text with its letters of ASCII in lower case; eight bytes at a time, since searches go through megabytes.
inline void appendLowered(std::string& to, std::string_view text)
{
    constexpr std::uint64_t kOnes = 0x0101010101010101U, kHigh = 0x80U * kOnes;
    std::size_t at = to.size();
    to += text;
    for (std::uint64_t word = 0; to.size() - at >= sizeof word; at += sizeof word) {
        std::memcpy(&word, to.data() + at, sizeof word);
        const std::uint64_t low = word & ~kHigh; // no byte of which carries into the next
        const std::uint64_t fromA = low + (0x80U - 'A') * kOnes, behindZ = low + (0x80U - 'Z' - 1) * kOnes;
        word |= (fromA & ~behindZ & ~word & kHigh) >> 2U;
        std::memcpy(to.data() + at, &word, sizeof word);
    }
    for (; at < to.size(); ++at)
        to[at] = lower(to[at]);
}

inline std::string lowered(std::string_view text)
{
    std::string result;
    appendLowered(result, text);
    return result;
}

constexpr bool equalsIgnoringCase(std::string_view a, std::string_view b) noexcept
{
    return std::ranges::equal(a, b, {}, lower, lower);
}

} // namespace mervo::platform::ascii
