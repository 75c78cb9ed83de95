#pragma once

#include "platform/applescript/values/TextRules.h"

#include <cstddef>
#include <string_view>
#include <vector>

namespace mervo::applescript {

/// Runs of letters and digits, with an apostrophe or full stop between letters and a comma or full stop between digits.
std::vector<TextRange> wordsOf(std::string_view text);
/// Lines, split at LF, CR or CR LF; a text that ends with a line end has an empty last one.
std::vector<TextRange> paragraphsOf(std::string_view text);
/// Characters as a reader counts them.
std::vector<TextRange> charactersOf(std::string_view text);
/// What lies between the delimiters, which stand in order and do not overlap.
std::vector<TextRange> itemsBetween(const std::vector<TextRange>& delimiters, std::size_t length);

} // namespace mervo::applescript
