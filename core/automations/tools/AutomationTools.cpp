#include "core/automations/tools/AutomationTools.h"

#include "core/automations/engine/RondelEngine.h"
#include "core/automations/tools/AutomationArguments.h"
#include "core/automations/tools/AutomationText.h"
#include "core/tools/Arguments.h"

#include <array>
#include <fmt/format.h>

namespace mervo::AutomationTools {

namespace {

constexpr Argument kName = required("name", "name of the automation, see auto.list");
constexpr std::int64_t kUsualLines = 80;
constexpr Argument kNewName = required("name", "name of the new automation");

/// What the arguments mean is found out before the call is judged, and again when it runs, perhaps days later.
template <auto Read>
Invocation checked(const Args& args)
{
    Read(args);
    return {};
}

constexpr auto* checkName = checked<AutomationArguments::existing>;

/// An operation on a named automation; `answer` has its name at "{}".
template <typename Operation>
std::function<std::string(const Args&)> onNamed(Operation operation, const char* answer)
{
    return [operation, answer](const Args& args) {
        const std::string name = AutomationArguments::existing(args).name;
        operation(RondelEngine(), name);
        return fmt::format(fmt::runtime(answer), name);
    };
}

std::string addAutomation(const Args& args)
{
    const AutomationDraft draft = AutomationArguments::newDraft(args);
    RondelEngine().add(draft);
    return fmt::format("✅ automation '{}' created - {}", draft.name, scheduleLabel(draft.schedule));
}

std::string editAutomation(const Args& args)
{
    const AutomationDraft draft = AutomationArguments::changedDraft(args);
    RondelEngine().edit(draft);
    return fmt::format("✅ automation '{}' updated", draft.name);
}

std::vector<Argument> whole(const Argument& name)
{
    return {name, optional("every", "schedule: every so many minutes", Formats::whole(1)),
        optional("everyMinutes", "another name of every", Formats::whole(1)),
        optional("at", "schedule: daily at HH:MM", Formats::time),
        optional("hours", "schedule: daily at these hours, 8,12,16", Formats::hours),
        optional("prompt", "work of an agent: its instructions"),
        optional("command", "work of a script: a shell command"), optional("tool", "work of a tool: its id"),
        optional("args", "the tool's arguments, k=v k=v"),
        optional("client", "the agent's client: claude, codex, agy or grok (claude)",
            Formats::words("claude|codex|agy|grok")),
        optional("model", "the agent's model"),
        optional("effort", "low, medium, high, xhigh or max",
            Formats::words("low|medium|high|xhigh|max", {"the agent's client may refuse it"})),
        optional("background", "true: the agent runs without a window", Formats::onUnlessFalse),
        optional("screen", "number of the screen for the agent's window",
            Formats::whole(std::numeric_limits<double>::lowest(), Formats::withoutEffect("it counts as not given"))),
        optional("notifyOnFail", "true: a failed script or tool mails the owner", Formats::onUnlessFalse),
        optional("cwd", "working directory", Formats::paths),
        optional("disabled", "true: made, but paused", Formats::onUnlessFalse)};
}

} // namespace

std::span<const Tool* const> all()
{
    static const std::array tools{&list(), &log(), &add(), &edit(), &enable(), &disable(), &run(), &remove()};
    return tools;
}

const Tool& list()
{
    static const Tool tool{
        .id = "auto.list",
        .summary = "List the scheduled automations (rondel engine): name, kind (agent|script|tool), enabled, "
                   "schedule, last run + exit. Read-only. No args.",
        .effect = Effect::read,
        .arguments = {},
        .build = Arguments::acceptAll(),
        .nativeRun = [](const Args&) { return AutomationText::list(RondelEngine::list()); },
    };
    return tool;
}

const Tool& log()
{
    static const Tool tool{
        .id = "auto.log",
        .summary = "Tail an automation's log (name, [lines=80]). Read-only.",
        .effect = Effect::read,
        .arguments = {kName,
            optional("lines", "so many of the last lines (80)", Formats::nativeLimit(80, {"the answer is empty"}))},
        .build = checkName,
        .nativeRun =
            [](const Args& args) {
                return AutomationText::logTail(AutomationArguments::existing(args).name,
                    Arguments::wholeNumber(Arguments::optional(args, "lines")).value_or(kUsualLines));
            },
    };
    return tool;
}

const Tool& add()
{
    static const Tool tool{
        .id = "auto.add",
        .summary = "Create an automation. Args: name, schedule (one of: every=MINUTES | at=HH:MM | hours=8,12,16), "
                   "and ONE work kind - agent: prompt= [model=sonnet|opus, alias resolved to the latest by the CLI] "
                   "[effort=low|medium|high|xhigh|max] [background=true] [screen=N] · script: command= "
                   "[notifyOnFail=true] · tool: tool=<harness tool id> [args=\"k=v k=v\"] [notifyOnFail=true]. "
                   "Common: [cwd=DIR] [disabled=true]. Runs via launchd even when the cockpit is closed.",
        .effect = Effect::create,
        .arguments = whole(kNewName),
        .build = checked<AutomationArguments::newDraft>,
        .nativeRun = addAutomation,
        .remarks = AutomationArguments::remarks,
    };
    return tool;
}

const Tool& edit()
{
    static const Tool tool{
        .id = "auto.edit",
        .summary = "Edit an automation (same args as auto.add; name and kind are fixed - rm + add to change them). "
                   "Only pass what changes; schedule args replace the schedule.",
        .effect = Effect::create,
        .arguments = whole(kName),
        .build = checked<AutomationArguments::changedDraft>,
        .nativeRun = editAutomation,
        .remarks = AutomationArguments::remarks,
    };
    return tool;
}

const Tool& enable()
{
    static const Tool tool{
        .id = "auto.enable",
        .summary = "Enable an automation (name).",
        .effect = Effect::create,
        .arguments = {kName},
        .build = checkName,
        .nativeRun = onNamed([](const RondelEngine& engine, const std::string& name) { engine.setEnabled(name, true); },
            "✅ '{}' enabled"),
    };
    return tool;
}

const Tool& disable()
{
    static const Tool tool{
        .id = "auto.disable",
        .summary = "Disable an automation without deleting it (name).",
        .effect = Effect::create,
        .arguments = {kName},
        .build = checkName,
        .nativeRun =
            onNamed([](const RondelEngine& engine, const std::string& name) { engine.setEnabled(name, false); },
                "✅ '{}' disabled"),
    };
    return tool;
}

const Tool& run()
{
    static const Tool tool{
        .id = "auto.run",
        .summary = "Trigger an automation NOW, detached (name) - returns immediately; follow with auto.log.",
        .effect = Effect::create,
        .arguments = {kName},
        .build = checkName,
        .nativeRun = onNamed([](const RondelEngine& engine, const std::string& name) { engine.runNow(name); },
            "▶ '{0}' started - auto.log name={0} to follow"),
    };
    return tool;
}

const Tool& remove()
{
    static const Tool tool{
        .id = "auto.rm",
        .summary = "Delete an automation and its launchd agent (name). Irreversible -> approval.",
        .effect = Effect::destructive,
        .arguments = {kName},
        .build = checkName,
        .nativeRun = onNamed(
            [](const RondelEngine& engine, const std::string& name) { engine.remove(name); }, "🗑 '{}' removed"),
        .preview = [](const Args& args) -> std::optional<std::string> {
            return AutomationText::preview(AutomationArguments::existing(args));
        },
    };
    return tool;
}

} // namespace mervo::AutomationTools
