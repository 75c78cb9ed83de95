#pragma once

#include <string>
#include <string_view>

namespace mervo::cli {

/// One paragraph broken at blanks into lines of at most `width` characters, each with a line feed; lines after the
/// first start with `indent` blanks. A word that is longer stands alone and is not cut.
std::string wrapped(std::string_view text, std::size_t width, std::size_t indent);

/// A text of paragraphs, each wrapped anew; lines that start with a blank, and empty ones, stay as they are.
std::string rewrapped(std::string_view text, std::size_t width);

} // namespace mervo::cli
