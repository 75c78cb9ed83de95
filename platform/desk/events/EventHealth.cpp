#include "platform/desk/events/EventHealth.h"

#include "platform/desk/contentlines/ContentDocument.h"
#include "platform/desk/events/EventSettings.h"
#include "platform/desk/health/Findings.h"
#include "platform/desk/recurrence/Recurrences.h"
#include "platform/desk/vdir/Vdir.h"

#include <algorithm>
#include <ctime>
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
    const char* other; ///< the component that makes a collection one of the other kind
};

struct Count {
    std::size_t collections = 0, items = 0;
    bool hasDefault = false;
    std::string first; ///< by title, of those that can be written
    std::vector<std::string> damaged; // files, with the reason
    std::vector<std::string> endless; // files
};

/// How many there are of each component.
struct Contents {
    std::size_t ours = 0, others = 0;
};

/// Whether its events have more dates in the year to come than a call shows. Rules that do name a part of the day.
bool isEndless(const std::string& bytes)
{
    constexpr std::int64_t kYear = 366 * 86'400; // seconds
    constexpr const char* kParts[] = {"SECONDLY", "MINUTELY", "HOURLY", "BYSECOND", "BYMINUTE", "BYHOUR"};
    if (std::ranges::none_of(kParts, [&](const char* part) { return bytes.find(part) != std::string::npos; }))
        return false;
    const std::int64_t now = std::time(nullptr);
    return occurrences(timesText(bytes), {now, now + kYear}).isBounded;
}

/// What is wrong with a file; empty: nothing.
std::string fault(const path& file, const Words& words, Contents& contents, std::vector<std::string>& endless)
{
    std::string why;
    const auto found = readItem(file, why);
    if (!found)
        return why;
    const ContentDocument document(found->bytes);
    const auto calendars = document.components(document.root(), "VCALENDAR");
    for (const auto calendar : calendars) {
        contents.ours += document.components(calendar, words.component).size();
        contents.others += document.components(calendar, words.other).size();
    }
    if (calendars.empty())
        return "no calendar";
    if (!document.isBalanced())
        return "cut off, or nested wrongly";
    if (words.component == std::string_view("VEVENT") && isEndless(found->bytes))
        endless.push_back(file.string());
    return "";
}

/// A collection of the other kind alone is left out, but for what is damaged in it.
Count count(const EventSettings& settings, const Words& words)
{
    Count all;
    const VdirListing listing = listVdir(settings.root, ".ics");
    for (const VdirCollection& collection : listing.collections) {
        Contents contents;
        for (const VdirItem& item : collection.items) {
            const path file = collection.folder / item.name;
            const std::string why = fault(file, words, contents, all.endless);
            if (!why.empty())
                all.damaged.push_back(fmt::format("{} ({})", file.string(), why));
        }
        if (contents.ours == 0 && contents.others > 0)
            continue;
        ++all.collections;
        all.items += contents.ours;
        if (!collection.isWritable)
            continue;
        all.hasDefault = all.hasDefault || collection.title == settings.defaultTitle;
        all.first = all.first.empty() ? collection.title : std::min(all.first, collection.title);
    }
    for (const SkippedFile& skipped : listing.skipped)
        all.damaged.push_back(fmt::format("{} ({})", skipped.file.string(), skipped.why));
    return all;
}

/// Where new entries go.
std::string defaultOf(const EventSettings& settings, const Count& all)
{
    if (all.hasDefault)
        return fmt::format("default \"{}\"", settings.defaultTitle);
    if (!settings.isDefaultNamed && !all.first.empty())
        return fmt::format("default \"{}\"", all.first);
    return fmt::format("default \"{}\" (made when it is needed)", settings.defaultTitle);
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
    if (status.type() == std::filesystem::file_type::not_found && !std::filesystem::is_symlink(settings.root, error)) {
        return {makeFinding(words.id, words.label,
            fmt::format("none at {} yet; \"{}\" is made with the first entry", root, settings.defaultTitle))};
    }
    if (!std::filesystem::is_directory(status) || ::access(root.c_str(), R_OK | X_OK) != 0) {
        return {makeFinding(words.id, words.label, fmt::format("{} is no folder that can be read", root),
            "Make it a folder that this user can read, or name another one in desk.toml (\"path\").")};
    }
    const Count all = count(settings, words);
    std::vector<Finding> findings;
    const bool isWritable = ::access(root.c_str(), W_OK) == 0;
    findings.push_back(makeFinding(words.id, words.label,
        fmt::format("{} {}, {} {} in {}; {}{}", all.collections, all.collections == 1 ? words.one : words.many,
            all.items, all.items == 1 ? "entry" : "entries", root, defaultOf(settings, all),
            isWritable ? "" : "; the folder cannot be written"),
        isWritable ? "" : "Make the folder writable for this user."));
    if (!all.damaged.empty()) {
        findings.push_back(makeFinding(fmt::format("{}.damaged", words.id),
            fmt::format("{}, damaged items", words.label), fmt::format("not shown: {}", named(all.damaged)),
            "Mend or remove these files; the program that wrote them may bring them again."));
    }
    if (!all.endless.empty()) {
        findings.push_back(
            makeFinding(fmt::format("{}.endless", words.id), fmt::format("{}, endless rules", words.label),
                fmt::format("not every date is shown: {}", named(all.endless)),
                "They repeat more than 10,000 times a year: give their rule (RRULE) an end, or remove them."));
    }
    return findings;
}

} // namespace

std::vector<Finding> examineEvents(const Configuration& configuration)
{
    return examine(
        configuration, Entity::events, {"desk.calendars", "Calendars", "calendar", "calendars", "VEVENT", "VTODO"});
}

std::vector<Finding> examineReminders(const Configuration& configuration)
{
    return examine(
        configuration, Entity::reminders, {"desk.reminders", "Reminders", "list", "lists", "VTODO", "VEVENT"});
}

} // namespace mervo::desk
