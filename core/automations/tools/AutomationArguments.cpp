#include "core/automations/tools/AutomationArguments.h"

#include "core/automations/engine/RondelEngine.h"
#include "core/automations/model/AgentClients.h"
#include "core/automations/model/AutomationName.h"
#include "core/foundation/Text.h"
#include "core/tools/Arguments.h"

#include <fmt/format.h>
#include <initializer_list>
#include <string>

namespace mervo::AutomationArguments {

namespace {

using Draft = AutomationDraft;
using Kind = Automation::Kind;

std::int64_t within(const std::string& text, std::int64_t last, const char* refusal)
{
    const auto number = Arguments::wholeNumber(text);
    if (!number || *number < 0 || *number > last)
        throw ToolError::badArg(refusal);
    return *number;
}

Automation::Schedule interval(const std::string& text)
{
    const auto minutes = Arguments::wholeNumber(text);
    if (!minutes || *minutes <= 0)
        throw ToolError::badArg("every= must be minutes > 0");
    return Automation::Interval{*minutes};
}

Automation::Schedule daily(const std::string& text)
{
    constexpr const char* kRefusal = "at= must be HH:MM";
    const auto parts = Text::split(text, ':');
    if (parts.size() != 2)
        throw ToolError::badArg(kRefusal);
    return Automation::Calendar{within(parts[0], 23, kRefusal), within(parts[1], 59, kRefusal)};
}

Automation::Schedule hours(const std::string& text)
{
    Automation::Hours schedule{{}, 0};
    for (const std::string& hour : Text::split(text, ','))
        schedule.hours.push_back(within(std::string(Text::trimmed(hour)), 23, "hours= must be a comma list of 0-23"));
    return schedule;
}

/// Of the first schedule key that is there; nothing when there is none.
std::optional<Automation::Schedule> scheduleOf(const Args& args)
{
    constexpr std::pair<const char*, Automation::Schedule (*)(const std::string&)> kReaders[] = {
        {"every", interval}, {"everyMinutes", interval}, {"at", daily}, {"hours", hours}};
    for (const auto& [key, reader] : kReaders) {
        if (const auto found = args.find(key); found != args.end())
            return reader(found->second);
    }
    return std::nullopt;
}

/// The value of a key, unless it is absent or empty.
std::optional<std::string> given(const Args& args, std::string_view key)
{
    return Arguments::isPresent(args, key) ? std::optional(args.find(key)->second) : std::nullopt;
}

std::string requireClient(const Args& args, std::string_view stored)
{
    const auto found = args.find("client");
    if (found == args.end())
        return std::string(stored);
    if (AgentClients::isKnown(found->second))
        return found->second;
    std::vector<std::string> ids;
    for (const AgentClient& client : AgentClients::all())
        ids.emplace_back(client.id);
    throw ToolError::badArg("client must be one of " + Text::join(ids, ", "));
}

Draft::Work agent(const Args& args, const Automation& stored)
{
    Draft::Agent agent;
    agent.prompt = given(args, "prompt").value_or(stored.prompt.value_or(""));
    agent.client = requireClient(args, stored.client);
    const auto usual = AgentClients::client(agent.client).defaultModel;
    agent.model = Arguments::optional(args, "model", stored.model.value_or(std::string(usual.value_or(""))));
    agent.effort = Arguments::optional(args, "effort", stored.effort.value_or(""));
    agent.visible = !Arguments::isOn(args, "background", !stored.visible);
    const auto screen = given(args, "screen");
    const auto number = screen ? Arguments::wholeNumber(*screen) : std::nullopt;
    agent.screen = number ? number : stored.screen;
    return agent;
}

/// Of a script or a tool; nothing when the arguments and the stored automation say of neither. A stored command that
/// nothing changes stays as it is written.
std::optional<Draft::Work> command(const Args& args, const Automation& stored)
{
    const bool notify = Arguments::isOn(args, "notifyOnFail", stored.notifyOnFail);
    const bool wasTool = stored.kind == Kind::tool;
    const auto tool = given(args, "tool"), line = given(args, "command"), words = given(args, "args");
    if (tool || (wasTool && !line && args.contains("args"))) {
        const ToolCall before = wasTool ? ToolCall::ofCommand(stored.command.value_or("")) : ToolCall{};
        return Draft::Tool{tool.value_or(before.tool), Arguments::optional(args, "args", before.args), notify};
    }
    if (line || stored.kind != Kind::agent)
        return Draft::Script{line.value_or(stored.command.value_or("")), notify};
    return std::nullopt;
}

void setCommon(Draft& draft, const Args& args, const Automation& stored)
{
    draft.cwd = given(args, "cwd");
    if (!draft.cwd)
        draft.cwd = stored.cwd;
    draft.enabled = !Arguments::isOn(args, "disabled", !stored.enabled);
}

void refuseOtherKind(const Args& args, const Automation& stored)
{
    const bool isAgent = stored.kind == Kind::agent;
    if (isAgent && (Arguments::isPresent(args, "command") || Arguments::isPresent(args, "tool")))
        throw ToolError::badArg(fmt::format("'{}' is an agent automation - rm + add to change its kind", stored.name));
    if (!isAgent && Arguments::isPresent(args, "prompt"))
        throw ToolError::badArg(
            fmt::format("'{}' is a {} automation - rm + add to change its kind", stored.name, rawValue(stored.kind)));
}

ToolError notListed(const std::string& name)
{
    return ToolError::badArg(fmt::format("no automation named '{}' (see auto.list)", name));
}

} // namespace

Automation existing(const Args& args)
{
    const std::string name = Arguments::optional(args, "name");
    auto found = RondelEngine::find(name);
    if (!found)
        throw notListed(name);
    return *std::move(found);
}

AutomationDraft newDraft(const Args& args)
{
    AutomationDraft draft{.name = Arguments::optional(args, "name")};
    if (draft.name.empty())
        throw notListed("");
    if (!AutomationName::isValid(draft.name))
        throw ToolError::badArg(AutomationName::refusal(draft.name));
    const auto schedule = scheduleOf(args);
    if (!schedule)
        throw ToolError::badArg("schedule: every= | at= | hours=");
    draft.schedule = *schedule;
    const Automation none;
    const auto work = command(args, none);
    if (!work && !Arguments::isPresent(args, "prompt"))
        throw ToolError::badArg("work: prompt= | command= | tool=");
    draft.work = work ? *work : agent(args, none);
    setCommon(draft, args, none);
    return draft;
}

AutomationDraft changedDraft(const Args& args)
{
    const Automation stored = existing(args);
    AutomationDraft draft{.name = stored.name};
    draft.schedule = scheduleOf(args).value_or(stored.schedule);
    refuseOtherKind(args, stored);
    draft.work = stored.kind == Kind::agent ? agent(args, stored) : *command(args, stored);
    setCommon(draft, args, stored);
    return draft;
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
