#pragma once

#include <cstddef>
#include <string_view>

namespace mervo {

/// The number of bytes to insert, remove or replace, or of neighbours to swap, to get from one word to the other. Takes
/// time in proportion to the product of both lengths: for short words, such as names that a person mistypes.
std::size_t editDistance(std::string_view from, std::string_view to);

} // namespace mervo
