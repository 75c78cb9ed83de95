#include "core/doctor/Checks.h"
#include "core/foundation/ConfigDir.h"
#include "core/foundation/HarnessConfig.h"
#include "core/foundation/JsonText.h"
#include "core/foundation/Text.h"
#include "platform/files.h"

#include <algorithm>
#include <filesystem>
#include <fmt/format.h>
#include <nlohmann/json.hpp>

namespace mervo::Doctor {

namespace {

namespace fs = std::filesystem;
using nlohmann::json;

constexpr std::string_view kLegacyKey = "yoloMode"; ///< read where autonomyMode is missing, and never written

Finding notThereYet(const fs::path& path)
{
    fs::path above = path.parent_path();
    while (!fs::exists(above) && above.has_relative_path())
        above = above.parent_path();
    Finding finding;
    if (fs::is_directory(above) && platform::canWrite(above)) {
        finding.state = State::works;
        finding.detail = path.string() + " is created at the first call";
    } else {
        finding.detail = fmt::format("{} is not there and cannot be created in {}", path.string(), above.string());
        finding.remedy =
            fmt::format("Give yourself the right to write in {}, or set MERVO_HOME to another folder.", above.string());
    }
    return finding;
}

/// Every key that is read, with a value of the right kind.
json everyKey()
{
    HarnessConfig config;
    config.rondelHome = config.terminalApp = config.notifyIMessageHandle = "";
    json keys = json::parse(config.encode());
    keys[kLegacyKey] = false;
    return keys;
}

/// Says of each key what is wrong with it.
Finding ofKeys(const json& object, std::string_view text)
{
    const json known = everyKey();
    const json defaults = json::parse(HarnessConfig().encode());
    Finding finding;
    finding.state = State::works;
    std::vector<std::string> complaints;
    for (const auto& [key, value] : object.items()) {
        if (!known.contains(key)) {
            complaints.push_back(fmt::format("{} is not known and has no effect", Text::visibleLine(key)));
            if (finding.state == State::works)
                finding.state = State::limited;
        } else if (!HarnessConfig::takes(key, *JsonText::value(text, key))) {
            const std::string fallback = defaults.contains(key) ? defaults[key].dump() : "nothing";
            complaints.push_back(fmt::format("{} has a value that cannot be used; it counts as {}", key, fallback));
            finding.state = State::broken;
            finding.remedy = "Mend the named settings in config.json, or delete their lines.";
        }
    }
    finding.detail = complaints.empty() ? "config.json is in order" : Text::join(complaints, "\n");
    return finding;
}

/// The files beside config.json in which an update kept what it could not take over.
std::vector<std::string> keptBeside(const fs::path& file)
{
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(file.parent_path())) {
        if (entry.path().filename().string().starts_with(file.filename().string() + ".damaged"))
            names.push_back(Text::visibleLine(entry.path().string()));
    }
    std::ranges::sort(names);
    return names;
}

/// A folder of Mervo's own sources, as `git clone` makes it; scripts/check-home asks the same.
bool holdsSources(const fs::path& folder)
{
    const auto list = platform::readFile(folder / "CMakeLists.txt");
    return list && ("\n" + *list).find("\nproject(mervo ") != std::string::npos
        && fs::is_directory(folder / "core/policy");
}

/// For a shell.
std::string quoted(const fs::path& path)
{
    return Text::shellQuoted(path.string());
}

/// The commands that part a home from the sources in it.
std::string partingCommands(const fs::path& home)
{
    fs::path aside = home.string() + "-src";
    for (int number = 2; fs::exists(fs::symlink_status(aside)); ++number)
        aside = home.string() + "-src" + std::to_string(number);
    std::string commands = fmt::format("mv {0} {1} && mkdir -m 700 {0} && cd {1}", quoted(home), quoted(aside));
    std::string state;
    for (const char* name : {"config.json", "config.json.damaged", "mervo.sqlite", "mervo.sqlite-journal", "pending",
             "automations", ".runtime", ".migrated", ".lock"}) {
        if (fs::exists(home / name))
            state += std::string(" ") + name;
    }
    if (!state.empty())
        commands += " && mv -t " + quoted(home) + state;
    return commands + (fs::is_directory(home / "build") ? " && rm -rf build" : "");
}

/// The first of the places that every call uses which belongs to somebody else; empty when all are ours.
std::string notOurs(const fs::path& home)
{
    for (const fs::path& path : {home, home / "config.json", home / "mervo.sqlite", home / "pending"}) {
        if (!platform::isOurs(path))
            return path.string();
    }
    return {};
}

} // namespace

Finding home()
{
    const fs::path path = ConfigDir::url();
    if (!fs::exists(path))
        return notThereYet(path);
    Finding finding;
    finding.detail = path.string();
    if (!fs::is_directory(path)) {
        finding.detail += " is not a folder";
        finding.remedy = "Move it away; a folder of that name is created at the first call.";
        return finding;
    }
    if (holdsSources(path)) {
        finding.detail += " holds Mervo's own sources: whoever deletes them deletes the rules, the queue and the trail";
        finding.remedy = "Quit the cockpit, then move the sources away:\n" + partingCommands(path);
        return finding;
    }
    if (const std::string foreign = notOurs(path); !foreign.empty()) {
        finding.detail = foreign + " belongs to another user";
        finding.remedy = fmt::format("Make the whole home yours: sudo chown -R \"$USER\" \"{}\"", path.string());
        return finding;
    }
    if (!platform::canWrite(path)) {
        finding.detail += " cannot be written";
        finding.remedy = fmt::format("Make it yours and writable: chmod 700 \"{}\"", path.string());
        return finding;
    }
    const auto others = fs::status(path).permissions() & (fs::perms::group_all | fs::perms::others_all);
    finding.state = others == fs::perms::none ? State::works : State::limited;
    if (finding.state == State::limited) {
        finding.detail += " is open to other users until the next call closes it";
        finding.remedy = fmt::format("To close it now: chmod 700 \"{}\"", path.string());
    }
    return finding;
}

Finding settings()
{
    const fs::path file = ConfigDir::url() / "config.json";
    Finding finding;
    if (!fs::exists(file)) {
        finding.state = State::works;
        finding.detail = "no config.json yet, every setting has its default";
        return finding;
    }
    finding.detail = HarnessConfig::complaint();
    finding.remedy = "Mend the file, or move it away.";
    if (!finding.detail.empty())
        return finding;
    const auto text = platform::readFile(file);
    if (text)
        finding = ofKeys(json::parse(*text, nullptr, false), *text);
    if (const auto kept = keptBeside(file); !kept.empty()) {
        finding.state = std::max(finding.state, State::limited);
        finding.detail +=
            fmt::format("\nwhat could not be taken over of an earlier one is in {}", Text::join(kept, ", "));
        finding.remedy +=
            (finding.remedy.empty() ? "" : " ") + std::string("Take over what is missed, then delete the file.");
    }
    return finding;
}

} // namespace mervo::Doctor
