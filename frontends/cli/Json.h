#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>
#include <string_view>

namespace mervo::cli {

/// One line of compact JSON in UTF-8 with a line feed, keys in the order of insertion. Exact: a reader gets every
/// text back as it was (bytes that are not UTF-8, which JSON cannot hold, become U+FFFD).
std::string jsonLine(const nlohmann::ordered_json& value);

/// The same JSON with every hidden character (Text::isHidden) written as an escape ("\u202e", a surrogate pair beyond
/// U+FFFF), so that it is safe on a screen. Such characters occur only inside the strings of compact JSON.
std::string withEscapes(std::string_view compactJson);

} // namespace mervo::cli
