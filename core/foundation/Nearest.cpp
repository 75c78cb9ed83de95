#include "core/foundation/Nearest.h"

#include "platform/ascii.h"

#include <algorithm>
#include <numeric>
#include <utility>

namespace mervo {

namespace {

constexpr std::size_t kLongestName = 64; ///< no name is nearly as long; the work is quadratic

std::optional<std::size_t> distanceWithinReach(const std::string& wanted, const std::string& candidate)
{
    const std::size_t distance = candidate.starts_with(wanted) ? 1 : editDistance(wanted, candidate);
    return distance <= reach(wanted) ? std::optional(distance) : std::nullopt;
}

} // namespace

std::size_t editDistance(std::string_view from, std::string_view to)
{
    std::vector<std::size_t> beforeLast(to.size() + 1);
    std::vector<std::size_t> last(to.size() + 1);
    std::vector<std::size_t> row(to.size() + 1);
    std::iota(last.begin(), last.end(), std::size_t{0});
    for (std::size_t i = 1; i <= from.size(); ++i) {
        row[0] = i;
        for (std::size_t j = 1; j <= to.size(); ++j) {
            const std::size_t replaced = last[j - 1] + (from[i - 1] == to[j - 1] ? 0 : 1);
            row[j] = std::min({last[j] + 1, row[j - 1] + 1, replaced});
            if (i > 1 && j > 1 && from[i - 1] == to[j - 2] && from[i - 2] == to[j - 1])
                row[j] = std::min(row[j], beforeLast[j - 2] + 1);
        }
        beforeLast.swap(last);
        last.swap(row);
    }
    return last.back();
}

std::size_t reach(std::string_view wanted) noexcept
{
    return std::max<std::size_t>(1, wanted.size() / 3);
}

Likeness::Likeness()
    : folded(platform::ascii::lowered)
    , distance(distanceWithinReach)
{
}

std::vector<std::string> nearest(
    std::string_view name, std::span<const std::string_view> candidates, std::size_t count, const Likeness& likeness)
{
    if (name.empty() || name.size() > kLongestName)
        return {};
    const std::string wanted = likeness.folded(name);
    std::vector<std::pair<std::size_t, std::string_view>> near;
    for (const std::string_view candidate : candidates) {
        if (const auto distance = likeness.distance(wanted, likeness.folded(candidate)))
            near.emplace_back(*distance, candidate);
    }
    std::ranges::stable_sort(near, {}, &std::pair<std::size_t, std::string_view>::first);
    std::vector<std::string> names;
    for (const auto& [distance, candidate] : std::span(near).first(std::min(count, near.size())))
        names.emplace_back(candidate);
    return names;
}

std::string didYouMean(std::span<const std::string> suggestions)
{
    std::string text;
    for (std::size_t i = 0; i < suggestions.size(); ++i) {
        const bool last = i + 1 == suggestions.size();
        text += i == 0 ? "; did you mean " : last ? " or " : ", ";
        text += suggestions[i];
    }
    return text.empty() ? text : text + "?";
}

} // namespace mervo
