#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

namespace mervo {

/// Any text as JSON; a text that is not JSON gives a discarded value.
template <typename Json>
Json parsedJson(std::string_view text)
{
    constexpr bool kThrows = false;
    return Json::parse(text, nullptr, kThrows);
}

/// One line without blanks; bytes that are not UTF-8 become U+FFFD.
template <typename Json>
std::string compactJson(const Json& value)
{
    constexpr int kOneLine = -1;
    constexpr bool kAsciiOnly = false;
    return value.dump(kOneLine, ' ', kAsciiOnly, Json::error_handler_t::replace);
}

/// The same over several lines, with two blanks for each level.
template <typename Json>
std::string prettyJson(const Json& value)
{
    constexpr int kIndent = 2;
    constexpr bool kAsciiOnly = false;
    return value.dump(kIndent, ' ', kAsciiOnly, Json::error_handler_t::replace);
}

} // namespace mervo
