#include "core/automations/model/LoopObject.h"

#include "core/foundation/Json.h"
#include "core/foundation/JsonMembers.h"
#include "platform/files.h"
#include "platform/folders.h"

#include <chrono>

namespace mervo::LoopObject {

namespace {

using Json = nlohmann::json;
using JsonMembers::flag;
using JsonMembers::wholeNumber;

constexpr std::size_t kLongest = 1024 * 1024; ///< bytes
constexpr const char* kScript = "script";

Json encoded(const Automation::Interval& every)
{
    return {{"type", "interval"}, {"everyMinutes", every.minutes}};
}

Json encoded(const Automation::Calendar& at)
{
    return {{"type", "calendar"}, {"hour", at.hour}, {"minute", at.minute}};
}

Json encoded(const Automation::Hours& at)
{
    return {{"type", "hours"}, {"hours", at.hours}, {"minute", at.minute}};
}

Automation::Schedule scheduleOf(const Json& loop)
{
    const auto found = loop.find("schedule");
    const Json schedule = found == loop.end() ? Json() : *found;
    const std::string type = JsonMembers::text(schedule, "type").value_or("");
    const std::int64_t minute = wholeNumber(schedule, "minute").value_or(0);
    if (type == "calendar")
        return Automation::Calendar{wholeNumber(schedule, "hour").value_or(0), minute};
    if (type == "hours")
        return Automation::Hours{JsonMembers::wholeNumbers(schedule, "hours"), minute};
    return Automation::Interval{wholeNumber(schedule, "everyMinutes").value_or(Automation::kUsualMinutes)};
}

/// A tool automation is kept as a script that calls our own command line.
Automation::Kind kindOf(const Json& loop, const std::optional<std::string>& command)
{
    if (JsonMembers::text(loop, "kind") != kScript)
        return Automation::Kind::agent;
    const std::string_view line = command ? std::string_view(*command) : std::string_view();
    const bool callsUs = line.find(" run ") != std::string_view::npos && line.find("mervo") != std::string_view::npos;
    return callsUs ? Automation::Kind::tool : Automation::Kind::script;
}

template <typename Value>
void setOrErase(Json& object, const char* key, const std::optional<Value>& value)
{
    if (value) {
        object[key] = *value;
    } else {
        object.erase(key);
    }
}

/// Sets the members of each kind of work.
struct WorkWriter {
    Json& object;

    void operator()(const AutomationDraft::Agent& agent) const
    {
        object["model"] = agent.model;
        object["client"] = agent.client;
        object["visible"] = agent.visible;
        setOrErase(object, "effort", agent.effort && !agent.effort->empty() ? agent.effort : std::nullopt);
        setOrErase(object, "screen", agent.screen);
    }
    void operator()(const AutomationDraft::Script& script) const { write(script.command, script.notifyOnFail); }
    void operator()(const AutomationDraft::Tool& tool) const
    {
        write(AutomationDraft::toolCommand(tool.tool, tool.args), tool.notifyOnFail);
    }

private:
    void write(const std::string& command, bool notifyOnFail) const
    {
        object["kind"] = kScript;
        object["command"] = command;
        object["notifyOnFail"] = notifyOnFail;
    }
};

void write(Json& object, const AutomationDraft& draft)
{
    object["schedule"] = std::visit([](const auto& schedule) { return encoded(schedule); }, draft.schedule);
    if (draft.cwd)
        object["cwd"] = platform::expandTilde(*draft.cwd).string();
    if (wholeNumber(object, "timeoutSeconds").value_or(0) <= 0)
        object["timeoutSeconds"] = 0;
    std::visit(WorkWriter{object}, draft.work);
}

} // namespace

std::optional<Json> read(const std::filesystem::path& file)
{
    const auto bytes = platform::readFile(file, kLongest);
    Json parsed = bytes ? parsedJson<Json>(*bytes) : Json();
    return parsed.is_object() ? std::optional(std::move(parsed)) : std::nullopt;
}

Json make(const AutomationDraft& draft, Timestamps::Time createdAt)
{
    Json object{{"name", draft.name},
        {"createdAt", std::chrono::duration_cast<std::chrono::seconds>(createdAt.time_since_epoch()).count()}};
    write(object, draft);
    return object;
}

Json edited(Json stored, const AutomationDraft& draft)
{
    stored.erase("prompt");
    stored.erase("enabled");
    write(stored, draft);
    return stored;
}

std::optional<Automation> automation(const Json& object)
{
    auto name = JsonMembers::text(object, "name");
    if (!name)
        return std::nullopt;
    Automation automation;
    automation.name = *std::move(name);
    automation.command = JsonMembers::text(object, "command");
    automation.kind = kindOf(object, automation.command);
    automation.prompt = JsonMembers::text(object, "prompt");
    automation.model = JsonMembers::text(object, "model");
    automation.client = JsonMembers::text(object, "client").value_or(automation.client);
    automation.effort = JsonMembers::text(object, "effort");
    automation.cwd = JsonMembers::text(object, "cwd");
    automation.schedule = scheduleOf(object);
    automation.visible = flag(object, "visible").value_or(true);
    automation.screen = wholeNumber(object, "screen");
    automation.notifyOnFail = flag(object, "notifyOnFail").value_or(false);
    automation.isSystem = flag(object, "system").value_or(false);
    return automation;
}

std::string text(const Json& object)
{
    return prettyJson(object);
}

} // namespace mervo::LoopObject
