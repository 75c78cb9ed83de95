#include "core/catalogue/Catalogue.h"

#include "core/foundation/Nearest.h"
#include "platform/ascii.h"

#include <algorithm>
#include <array>
#include <optional>
#include <span>
#include <utility>

namespace mervo::Tools {

namespace {

/// Letter case and the choice between "." and "_" do not make two ids different.
std::string folded(std::string_view id)
{
    std::string text = platform::ascii::lowered(id);
    std::ranges::replace(text, '_', '.');
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

/// The tools of the family whose verbs mean what the wanted one means.
std::vector<std::string_view> meaningTheSame(std::string_view id)
{
    std::vector<std::string_view> ids;
    const auto [family, verb] = parts(folded(id));
    for (const auto meaning : kMeanings) {
        if (family.empty() || !ids.empty() || std::ranges::count(meaning, verb) == 0)
            continue;
        for (const Tool* tool : all()) {
            const auto [toolFamily, toolVerb] = parts(folded(tool->id));
            if (family == toolFamily && std::ranges::count(meaning, toolVerb) > 0)
                ids.push_back(tool->id);
        }
    }
    return ids;
}

std::optional<std::size_t> distanceOfVerbs(const std::string& wanted, const std::string& id)
{
    return editDistance(parts(wanted).second, parts(id).second);
}

/// The beginning of an id, or a verb without its family, is as near as one letter; a right verb in a wrong family is
/// just near enough.
std::optional<std::size_t> distanceOfIds(const std::string& wanted, const std::string& id)
{
    const auto verb = id.substr(id.find('.') + 1);
    if (verb == wanted || (wanted.size() > 2 && id.starts_with(wanted)))
        return 1;
    std::size_t distance = editDistance(wanted, id);
    if (verb == wanted.substr(wanted.find('.') + 1))
        distance = std::min(distance, reach(wanted));
    return distance <= reach(wanted) ? std::optional(distance) : std::nullopt;
}

} // namespace

std::vector<std::string> closest(std::string_view id, std::size_t count)
{
    Likeness likeness;
    likeness.folded = folded;
    std::vector<std::string_view> candidates = meaningTheSame(id);
    if (candidates.empty()) {
        for (const Tool* tool : all())
            candidates.push_back(tool->id);
        likeness.distance = distanceOfIds;
    } else {
        likeness.distance = distanceOfVerbs;
    }
    return nearest(id, candidates, count, likeness);
}

} // namespace mervo::Tools
