#include "core/automations/tools/AutomationArguments.h"

#include "core/automations/model/AgentClients.h"
#include "core/foundation/Text.h"
#include "core/tools/Arguments.h"

#include <algorithm>
#include <fmt/format.h>
#include <initializer_list>
#include <string>

namespace mervo::AutomationArguments {

namespace {

bool isWithin(const std::string& text, std::int64_t last)
{
    const auto number = Arguments::wholeNumber(text);
    return number && *number >= 0 && *number <= last;
}

bool isTime(const std::string& text)
{
    const auto parts = Text::split(text, ':');
    return parts.size() == 2 && isWithin(parts[0], 23) && isWithin(parts[1], 59);
}

bool areHours(const std::string& text)
{
    const auto hours = Text::split(text, ',');
    return std::all_of(hours.begin(), hours.end(), [](const std::string& hour) { return isWithin(hour, 23); });
}

/// Looks at the first schedule key that is there; false when there is none.
bool checkSchedule(const Args& args)
{
    for (const auto* key : {"every", "everyMinutes", "at", "hours"}) {
        const auto found = args.find(key);
        if (found == args.end())
            continue;
        const std::string_view name = key;
        if (name == "at" && !isTime(found->second))
            throw ToolError::badArg("at= must be HH:MM");
        if (name == "hours" && !areHours(found->second))
            throw ToolError::badArg("hours= must be a comma list of 0-23");
        if (name.starts_with("every") && Arguments::wholeNumber(found->second).value_or(0) <= 0)
            throw ToolError::badArg("every= must be minutes > 0");
        return true;
    }
    return false;
}

void checkClient(const Args& args)
{
    const auto found = args.find("client");
    if (found == args.end() || AgentClients::isKnown(found->second))
        return;
    std::vector<std::string> ids;
    for (const AgentClient& client : AgentClients::all())
        ids.emplace_back(client.id);
    throw ToolError::badArg("client must be one of " + Text::join(ids, ", "));
}

} // namespace

void requireName(const Args& args)
{
    if (!Arguments::isPresent(args, "name"))
        throw ToolError::badArg("no automation named '' (see auto.list)");
}

void checkNew(const Args& args)
{
    requireName(args);
    if (!checkSchedule(args))
        throw ToolError::badArg("schedule: every= | at= | hours=");
    if (!Arguments::isPresent(args, "tool") && !Arguments::isPresent(args, "command")
        && !Arguments::isPresent(args, "prompt"))
        throw ToolError::badArg("work: prompt= | command= | tool=");
    checkClient(args);
}

void checkChange(const Args& args)
{
    requireName(args);
    checkSchedule(args);
    checkClient(args);
}

std::vector<Remark> remarks(const Args& args)
{
    std::vector<Remark> all;
    const auto unused = [&](std::string_view name, std::string_view why) {
        if (args.contains(name))
            all.push_back(Remark::withoutEffect(name, fmt::format("{} has no effect {}", name, why)));
    };
    /// The first of these that is given counts; gives its name.
    const auto onlyFirst = [&](std::initializer_list<std::string_view> names) {
        std::string_view first;
        for (const std::string_view name : names) {
            if (!first.empty()) {
                unused(name, fmt::format("beside {}", first));
            } else if (args.contains(name)) {
                first = name;
            }
        }
        return first;
    };
    onlyFirst({"every", "everyMinutes", "at", "hours"});
    const std::string_view work = onlyFirst({"tool", "command", "prompt"});
    if (work == "tool" || work == "command") {
        for (const auto* name : {"client", "model", "effort", "background", "screen"})
            unused(name, fmt::format("beside {}: it is an agent's", work));
    }
    if (work == "command" || work == "prompt")
        unused("args", fmt::format("beside {}: they are a tool's", work));
    if (work == "prompt")
        unused("notifyOnFail", "beside prompt: an agent's failure sends no mail");
    return all;
}

} // namespace mervo::AutomationArguments
