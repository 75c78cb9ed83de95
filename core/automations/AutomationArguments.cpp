#include "core/automations/AutomationArguments.h"

#include "core/automations/AgentClients.h"
#include "core/foundation/Text.h"
#include "core/tools/Arguments.h"

#include <algorithm>
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

} // namespace mervo::AutomationArguments
