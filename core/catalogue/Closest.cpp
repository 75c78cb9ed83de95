#include "core/catalogue/Catalogue.h"

#include "core/foundation/EditDistance.h"

#include <algorithm>
#include <array>
#include <span>
#include <utility>

namespace mervo::Tools {

namespace {

constexpr std::size_t kLongestId = 64; // no id is nearly as long, and the work is quadratic

/// Letter case and the choice between "." and "_" do not make two ids different.
std::string plain(std::string_view id)
{
    std::string text(id);
    for (char& letter : text) {
        letter = letter == '_'               ? '.'
            : letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter + ('a' - 'A'))
                                             : letter;
    }
    return text;
}

// Verbs that mean one thing, tried in this order. An agent that asks for "mail.read" means mail.body, and nothing that
// sends, however few letters are between them.
constexpr std::array kReading{"read", "get", "show", "view", "display", "body", "text", "open"};
constexpr std::array kListing{"find", "search", "query", "list", "lists", "headers", "accounts", "all"};
constexpr std::array kLooking{"read", "get", "show", "view", "display", "find", "list", "search"};
constexpr std::array kAdding{"add", "create", "new", "make", "draft", "compose", "write"};
constexpr std::array kChanging{"update", "edit", "change", "modify", "set", "flag", "reschedule"};
constexpr std::array kDeleting{"delete", "remove", "rm", "trash", "erase", "purge"};
const std::array<std::span<const char* const>, 6> kMeanings{
    kReading, kListing, kLooking, kAdding, kChanging, kDeleting};

constexpr std::array kFamilies{std::pair{"email", "mail"}, std::pair{"calendar", "cal"}, std::pair{"event", "cal"},
    std::pair{"message", "imessage"}, std::pair{"automation", "auto"}};

/// Family and verb; a plural or another usual name of a family is its own name.
std::pair<std::string, std::string> parts(const std::string& id)
{
    const auto dot = id.find('.');
    if (dot == std::string::npos)
        return {};
    std::string family = id.substr(0, dot);
    if (family.ends_with('s'))
        family.pop_back();
    for (const auto& [other, own] : kFamilies) {
        if (family == other)
            family = own;
    }
    return {family, id.substr(dot + 1)};
}

using Near = std::vector<std::pair<std::size_t, std::string>>; ///< with the distance

/// The tools of the family whose verbs mean what the wanted one means.
Near meaningTheSame(const std::string& wanted)
{
    Near near;
    const auto [family, verb] = parts(wanted);
    for (const auto meaning : kMeanings) {
        if (family.empty() || !near.empty() || std::ranges::count(meaning, verb) == 0)
            continue;
        for (const Tool* tool : all()) {
            const auto [toolFamily, toolVerb] = parts(plain(tool->id));
            if (family == toolFamily && std::ranges::count(meaning, toolVerb) > 0)
                near.emplace_back(editDistance(verb, toolVerb), tool->id);
        }
    }
    return near;
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
    Near near = meaningTheSame(wanted);
    for (const Tool* tool : near.empty() ? all() : std::span<const Tool* const>()) {
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
