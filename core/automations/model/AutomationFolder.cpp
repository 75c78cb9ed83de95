#include "core/automations/model/AutomationFolder.h"

#include "core/foundation/Json.h"
#include "core/foundation/Text.h"
#include "platform/files.h"
#include "platform/process.h"

#include <charconv>
#include <exception>
#include <nlohmann/json.hpp>

namespace mervo::AutomationFolder {

namespace {

using Json = nlohmann::json;
namespace fs = std::filesystem;

constexpr std::size_t kLongestObject = 1024 * 1024; ///< bytes of a JSON file
constexpr std::size_t kLongestNumber = 64;

/// What a JSON file holds; no object (an empty one) when it cannot be read or is none.
Json objectIn(const fs::path& file)
{
    const auto bytes = platform::readFile(file, kLongestObject);
    Json parsed = bytes ? parsedJson<Json>(*bytes) : Json();
    return parsed.is_object() ? parsed : Json::object();
}

std::optional<std::string> text(const Json& object, const char* key)
{
    const auto found = object.find(key);
    return found != object.end() && found->is_string() ? std::optional(found->get<std::string>()) : std::nullopt;
}

std::optional<std::int64_t> number(const Json& object, const char* key)
{
    const auto found = object.find(key);
    return found != object.end() && found->is_number_integer() ? std::optional(found->get<std::int64_t>())
                                                               : std::nullopt;
}

std::optional<bool> flag(const Json& object, const char* key)
{
    const auto found = object.find(key);
    return found != object.end() && found->is_boolean() ? std::optional(found->get<bool>()) : std::nullopt;
}

std::vector<std::int64_t> numbers(const Json& object, const char* key)
{
    std::vector<std::int64_t> found;
    if (const auto list = object.find(key); list != object.end() && list->is_array()) {
        for (const Json& item : *list) {
            if (item.is_number_integer())
                found.push_back(item.get<std::int64_t>());
        }
    }
    return found;
}

Automation::Schedule scheduleOf(const Json& loop)
{
    const Json schedule = loop.value("schedule", Json::object());
    const std::string type = schedule.is_object() ? text(schedule, "type").value_or("") : "";
    if (type == "calendar")
        return Automation::Calendar{number(schedule, "hour").value_or(0), number(schedule, "minute").value_or(0)};
    if (type == "hours")
        return Automation::Hours{numbers(schedule, "hours"), number(schedule, "minute").value_or(0)};
    const auto minutes = schedule.is_object() ? number(schedule, "everyMinutes") : std::nullopt;
    return Automation::Interval{minutes.value_or(Automation::kUsualMinutes)};
}

/// A tool automation is kept as a script that calls our own command line.
Automation::Kind kindOf(const Json& loop, const std::optional<std::string>& command)
{
    if (text(loop, "kind") != "script")
        return Automation::Kind::agent;
    const std::string_view line = command ? std::string_view(*command) : std::string_view();
    const bool callsUs = line.find(" run ") != std::string_view::npos && line.find("mervo") != std::string_view::npos;
    return callsUs ? Automation::Kind::tool : Automation::Kind::script;
}

std::optional<std::string> promptOf(const Json& loop, const fs::path& folder)
{
    auto instructions = platform::readFile(folder / "AGENT.md");
    return instructions ? instructions : text(loop, "prompt");
}

void addState(Automation& automation, const fs::path& home)
{
    const auto file = runtimeFile(home, "state", automation.name, ".json");
    const Json state = file ? objectIn(*file) : Json::object();
    automation.enabled = flag(state, "enabled").value_or(true);
    if (const auto lastRun = text(state, "lastRun"))
        automation.lastRun = Timestamps::date(*lastRun);
    automation.lastExit = number(state, "lastExit");
    automation.running = isRunning(home, automation.name);
}

std::optional<Automation> read(const fs::path& loopFile, const fs::path& home)
{
    const Json loop = objectIn(loopFile);
    const auto name = text(loop, "name");
    if (!name)
        return std::nullopt;
    Automation automation;
    automation.name = *name;
    automation.command = text(loop, "command");
    automation.kind = kindOf(loop, automation.command);
    automation.prompt = promptOf(loop, loopFile.parent_path());
    automation.model = text(loop, "model");
    automation.client = text(loop, "client").value_or("claude");
    automation.effort = text(loop, "effort");
    automation.cwd = text(loop, "cwd");
    automation.schedule = scheduleOf(loop);
    automation.visible = flag(loop, "visible").value_or(true);
    automation.screen = number(loop, "screen");
    automation.notifyOnFail = flag(loop, "notifyOnFail").value_or(false);
    automation.isSystem = flag(loop, "system").value_or(false);
    addState(automation, home);
    return automation;
}

} // namespace

std::optional<Automation> load(const fs::path& loopFile, const fs::path& home) noexcept
{
    try {
        return read(loopFile, home);
    } catch (const std::exception&) {
        return std::nullopt; // a value that no field can hold
    }
}

bool isRunning(const fs::path& home, std::string_view name)
{
    const auto lock = runtimeFile(home, "run", name, ".lock.d");
    const auto bytes = lock ? platform::readFile(*lock / "pid", kLongestNumber) : std::nullopt;
    if (!bytes)
        return false;
    const std::string_view digits = Text::trimmed(*bytes);
    std::int64_t pid = 0;
    const auto [end, failure] = std::from_chars(digits.data(), digits.data() + digits.size(), pid);
    return failure == std::errc() && end == digits.data() + digits.size() && platform::isRunning(pid);
}

std::optional<fs::path> runtimeFile(
    const fs::path& home, std::string_view folder, std::string_view name, std::string_view ending)
{
    if (name.empty() || name.find_first_of(std::string_view("/\0", 2)) != std::string_view::npos)
        return std::nullopt;
    return home / ".runtime" / folder / (std::string(name) + std::string(ending));
}

} // namespace mervo::AutomationFolder
