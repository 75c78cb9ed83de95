#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace mervo {

/// The candidates that a mistyped word may have meant, best first: few letters apart, or beginning with it. Letter case
/// does not count.
std::vector<std::string> nearest(
    std::string_view word, std::span<const std::string_view> candidates, std::size_t count = 2);

/// "; did you mean run or tools?", or nothing.
std::string didYouMean(std::span<const std::string> suggestions);

} // namespace mervo
