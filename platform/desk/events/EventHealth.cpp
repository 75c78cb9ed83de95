#include "platform/desk/events/EventHealth.h"

#include "platform/desk/contentlines/ContentDocument.h"
#include "platform/desk/events/EventSettings.h"
#include "platform/desk/health/Findings.h"
#include "platform/desk/vdir/Vdir.h"

#include <algorithm>
#include <fmt/format.h>
#include <unistd.h>

namespace mervo::desk {
namespace {

using platform::Entity;
using std::filesystem::path;

constexpr std::size_t kMostNamed = 5;

struct Words {
    const char* id;
    const char* label;
    const char* one; ///< what a collection is called
    const char* many;
    const char* component;
};

struct Count {
    std::size_t collections = 0, items = 0;
    bool hasDefault = false;
    std::vector<std::string> damaged; // files, with the reason
};

/// What is wrong with a file; empty: nothing.
std::string fault(const path& file, std::string_view component, std::size_t& items)
{
    std::string why;
    const auto found = readItem(file, why);
    if (!found)
        return why;
    const ContentDocument document(found->bytes);
    const auto calendars = document.components(document.root(), "VCALENDAR");
    for (const auto calendar : calendars)
        items += document.components(calendar, component).size();
    if (calendars.empty())
        return "no calendar";
    return document.isBalanced() ? "" : "cut off, or nested wrongly";
}

Count count(const EventSettings& settings, std::string_view component)
{
    Count all;
    const VdirListing listing = listVdir(settings.root, ".ics");
    for (const VdirCollection& collection : listing.collections) {
        ++all.collections;
        all.hasDefault = all.hasDefault || (collection.title == settings.defaultTitle && collection.isWritable);
        for (const VdirItem& item : collection.items) {
            const path file = collection.folder / item.name;
            const std::string why = fault(file, component, all.items);
            if (!why.empty())
                all.damaged.push_back(fmt::format("{} ({})", file.string(), why));
        }
    }
    for (const SkippedFile& skipped : listing.skipped)
        all.damaged.push_back(fmt::format("{} ({})", skipped.file.string(), skipped.why));
    return all;
}

std::string named(std::vector<std::string> files)
{
    const std::size_t more = files.size() - std::min(files.size(), kMostNamed);
    files.resize(files.size() - more);
    return fmt::format("{}{}", fmt::join(files, ", "), more > 0 ? fmt::format(" and {} more", more) : "");
}

std::vector<Finding> examine(const Configuration& configuration, Entity entity, const Words& words)
{
    const EventSettings settings = eventSettings(configuration, entity);
    const std::string root = settings.root.string();
    std::error_code error;
    const auto status = std::filesystem::status(settings.root, error);
    if (status.type() == std::filesystem::file_type::not_found) {
        return {makeFinding(words.id, words.label,
            fmt::format("none at {} yet; “{}” is made with the first entry", root, settings.defaultTitle))};
    }
    if (!std::filesystem::is_directory(status) || ::access(root.c_str(), R_OK | X_OK) != 0) {
        return {makeFinding(words.id, words.label, fmt::format("{} is no folder that can be read", root),
            "Make it a folder that this user can read, or name another one in desk.toml (\"path\").")};
    }
    const Count all = count(settings, words.component);
    std::vector<Finding> findings;
    const bool isWritable = ::access(root.c_str(), W_OK) == 0;
    findings.push_back(makeFinding(words.id, words.label,
        fmt::format("{} {}, {} entries in {}; default “{}”{}{}", all.collections,
            all.collections == 1 ? words.one : words.many, all.items, root, settings.defaultTitle,
            all.hasDefault ? "" : " (made when it is needed)", isWritable ? "" : "; the folder cannot be written"),
        isWritable ? "" : "Make the folder writable for this user."));
    if (!all.damaged.empty()) {
        findings.push_back(makeFinding(fmt::format("{}.damaged", words.id),
            fmt::format("{}, damaged items", words.label), fmt::format("not shown: {}", named(all.damaged)),
            "Mend or remove these files; the program that wrote them may bring them again."));
    }
    return findings;
}

} // namespace

std::vector<Finding> examineEvents(const Configuration& configuration)
{
    return examine(configuration, Entity::events, {"desk.calendars", "Calendars", "calendar", "calendars", "VEVENT"});
}

std::vector<Finding> examineReminders(const Configuration& configuration)
{
    return examine(configuration, Entity::reminders, {"desk.reminders", "Reminders", "list", "lists", "VTODO"});
}

} // namespace mervo::desk
