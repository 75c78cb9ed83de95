#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>
#include <string_view>

namespace mervo::cli {

/// One line of compact JSON in UTF-8 with a line feed, keys in the order of insertion. Exact: a reader gets every
/// text back as it was (bytes that are no UTF-8, which JSON cannot hold, become U+FFFD).
std::string jsonLine(const nlohmann::ordered_json& value);

/// The same JSON with every control, zero-width and direction-changing character written as an escape ("\u202e"), so
/// that it is safe on a screen. Such characters stand only inside strings of compact JSON.
std::string withEscapes(std::string_view compactJson);

} // namespace mervo::cli
