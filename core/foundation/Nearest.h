#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace mervo {

/// The number of bytes to insert, remove or replace, or of neighbours to swap, to get from one word to the other. Takes
/// time in proportion to the product of both lengths.
std::size_t editDistance(std::string_view from, std::string_view to);

/// How far apart two names may be and still be near: a third of the letters of the wanted one.
std::size_t reach(std::string_view wanted) noexcept;

/// What makes two names alike.
struct Likeness {
    /// The form in which names are compared; by default letter case does not count.
    std::function<std::string(std::string_view)> folded;
    /// The distance of a candidate from the wanted name, both folded; nothing when it is not near. By default the edit
    /// distance within the reach, and 1 for a candidate that begins with the wanted name.
    std::function<std::optional<std::size_t>(const std::string& wanted, const std::string& candidate)> distance;

    Likeness();
};

/// The candidates that a mistyped name may have meant, nearest first; of equally near ones, the earlier first.
std::vector<std::string> nearest(std::string_view name, std::span<const std::string_view> candidates,
    std::size_t count = 2, const Likeness& likeness = {});

/// "; did you mean run or tools?", or nothing.
std::string didYouMean(std::span<const std::string> suggestions);

} // namespace mervo
