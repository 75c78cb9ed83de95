#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

/// Dictionaries of texts as JSON text: the form of every TEXT column and file that holds arguments or conditions.
/// Nothing here throws on any input, however deep or broken.
namespace mervo::StringMap {

using Pairs = std::vector<std::pair<std::string, std::string>>;

/// The members of a JSON object whose values are all texts, in their order; nothing for any other text.
std::optional<Pairs> decodePairs(std::string_view json);

/// A compact JSON object of the pairs as they stand; nothing when a text is not UTF-8.
std::optional<std::string> encodePairs(const std::vector<std::pair<std::string_view, std::string_view>>& pairs);

/// The same for a map: keys in sorted order; of a key that stands twice, the last value counts.
template <typename Map>
std::optional<Map> decode(std::string_view json)
{
    auto pairs = decodePairs(json);
    if (!pairs)
        return std::nullopt;
    Map map;
    for (auto& [key, value] : *pairs)
        map.insert_or_assign(std::move(key), std::move(value));
    return map;
}

template <typename Map>
std::optional<std::string> encode(const Map& map)
{
    return encodePairs({map.begin(), map.end()});
}

} // namespace mervo::StringMap
