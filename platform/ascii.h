#pragma once

#include <algorithm>
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

/// True when every byte is one of ASCII.
constexpr bool isAscii(std::string_view text) noexcept
{
    return std::ranges::all_of(text, [](unsigned char byte) { return byte < 0x80; });
}

inline std::string lowered(std::string_view text)
{
    std::string result(text);
    std::ranges::transform(result, result.begin(), lower);
    return result;
}

constexpr bool equalsIgnoringCase(std::string_view a, std::string_view b) noexcept
{
    return std::ranges::equal(a, b, {}, lower, lower);
}

} // namespace mervo::platform::ascii
