#include "core/catalogue/Tools.h"

#include "core/foundation/EditDistance.h"

#include <algorithm>
#include <utility>

namespace mervo::Tools {

namespace {

constexpr std::size_t kLongestId = 64; // no id is nearly as long, and the work is quadratic

/// Letter case and the choice between "." and "_" do not make two ids different.
std::string plain(std::string_view id)
{
    std::string text(id);
    for (char& letter : text)
        letter = letter == '_'               ? '.'
            : letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter + ('a' - 'A'))
                                             : letter;
    return text;
}

/// How far apart two ids may be and still be near.
std::size_t reach(const std::string& wanted)
{
    return std::max<std::size_t>(1, wanted.size() / 3);
}

/// How far a mistyped id is from a tool's. The beginning of an id, or a verb without its family, is as near as one
/// letter; a right verb in a wrong family is just near enough.
std::size_t farness(const std::string& wanted, const std::string& id)
{
    const auto verb = id.substr(id.find('.') + 1);
    if (verb == wanted || (wanted.size() > 2 && id.starts_with(wanted)))
        return 1;
    const std::size_t apart = editDistance(wanted, id);
    return verb == wanted.substr(wanted.find('.') + 1) ? std::min(apart, reach(wanted)) : apart;
}

} // namespace

std::vector<std::string> closest(std::string_view id, std::size_t count)
{
    if (id.empty() || id.size() > kLongestId)
        return {};
    const std::string wanted = plain(id);
    std::vector<std::pair<std::size_t, std::string>> near;
    for (const Tool* tool : all()) {
        const std::size_t far = farness(wanted, plain(tool->id));
        if (far <= reach(wanted))
            near.emplace_back(far, tool->id);
    }
    std::stable_sort(near.begin(), near.end(), [](const auto& a, const auto& b) { return a.first < b.first; });
    std::vector<std::string> ids;
    for (std::size_t i = 0; i < std::min(count, near.size()); ++i)
        ids.push_back(near[i].second);
    return ids;
}

} // namespace mervo::Tools
