#include "core/foundation/Nearest.h"

#include "core/foundation/EditDistance.h"

#include <algorithm>
#include <utility>

namespace mervo {

namespace {

constexpr std::size_t kLongestWord = 64; ///< no name is nearly as long; the work is quadratic

std::string lowered(std::string_view word)
{
    std::string result(word);
    std::ranges::transform(result, result.begin(), [](char c) { return c >= 'A' && c <= 'Z' ? char(c + 32) : c; });
    return result;
}

} // namespace

std::vector<std::string> nearest(std::string_view word, std::span<const std::string_view> candidates, std::size_t count)
{
    if (word.empty() || word.size() > kLongestWord)
        return {};
    const std::string wanted = lowered(word);
    std::vector<std::pair<std::size_t, std::string>> found;
    for (const std::string_view candidate : candidates) {
        const std::string name = lowered(candidate);
        const std::size_t apart = name.starts_with(wanted) ? 1 : editDistance(wanted, name);
        if (apart <= std::max<std::size_t>(1, wanted.size() / 3))
            found.emplace_back(apart, candidate);
    }
    std::ranges::stable_sort(found, {}, &std::pair<std::size_t, std::string>::first);
    std::vector<std::string> names;
    for (std::size_t i = 0; i < std::min(count, found.size()); ++i)
        names.push_back(found[i].second);
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
