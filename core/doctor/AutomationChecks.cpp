#include "core/automations/engine/RondelEngine.h"
#include "core/automations/model/AutomationFolder.h"
#include "core/automations/model/AutomationName.h"
#include "core/automations/model/RunTimes.h"
#include "core/doctor/Checks.h"
#include "core/foundation/ConfigDir.h"
#include "core/foundation/HarnessConfig.h"
#include "core/foundation/Text.h"
#include "core/policy/ActionPolicy.h"
#include "core/policy/RuleStore.h"
#include "platform/process.h"
#include "platform/programs.h"
#include "platform/schedule/Schedule.h"

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fmt/chrono.h>
#include <fmt/format.h>
#include <set>
#include <utility>

namespace mervo::Doctor {

namespace {

using platform::Moment;

/// The labels of the jobs that are loaded: the last column of `launchctl list`. Throws when it cannot be asked.
std::set<std::string> loadedJobs()
{
    const auto outcome =
        platform::run({.program = platform::platformProgram("launchctl").string(), .arguments = {"list"}});
    if (outcome.status != 0)
        throw std::runtime_error("launchctl does not list the jobs: " + outcome.error);
    std::set<std::string> labels;
    for (const std::string& line : Text::split(outcome.output, '\n'))
        labels.insert(line.substr(line.rfind('\t') + 1));
    return labels;
}

/// Of each automation whose last run that was due did not happen: name and local time.
std::vector<std::string> missedRuns(const std::vector<Automation>& enabled)
{
    const auto now = std::chrono::floor<std::chrono::seconds>(std::chrono::system_clock::now());
    const platform::OffsetAt offsetAt = platform::localOffset();
    std::vector<std::string> missed;
    for (const Automation& automation : enabled) {
        const auto since = RondelEngine::loadedSince(automation.name);
        const auto due = since ? RunTimes::missed(automation, *since, now, offsetAt) : std::nullopt;
        if (due)
            missed.push_back(fmt::format("{} ({:%Y-%m-%d %H:%M})", automation.name, *due + offsetAt(*due)));
    }
    return missed;
}

/// Of each automation whose last run was killed with its supervisor: the lock is there, and nobody holds it. The state
/// still tells of the run before.
std::vector<std::string> killedRuns(const std::vector<Automation>& enabled)
{
    std::vector<std::string> killed;
    for (const Automation& automation : enabled) {
        const auto lock = AutomationFolder::runtimeFile(RondelEngine::home(), "run", automation.name, ".lock.d");
        std::error_code unreadable;
        if (!automation.running && lock && std::filesystem::exists(*lock, unreadable))
            killed.push_back(automation.name);
    }
    return killed;
}

} // namespace

Finding automations()
{
    std::vector<Automation> all = RondelEngine::list(), enabled;
    std::ranges::copy_if(all, std::back_inserter(enabled), &Automation::enabled);
    Finding finding;
    finding.state = State::works;
    finding.detail = fmt::format("{}, of which {} paused", all.size(), all.size() - enabled.size());
    if (enabled.empty())
        return finding;

    for (const auto& [what, names] : {std::pair("did not run when it was due", missedRuns(enabled)),
             std::pair("was killed while it ran, and the next run tidies up", killedRuns(enabled))}) {
        if (names.empty())
            continue;
        finding.state = State::limited;
        finding.detail += fmt::format("\n{}: {}", what, Text::join(names, ", "));
        finding.remedy =
            "To run one now: mervo run auto.run name=<name>; what it wrote: mervo run auto.log name=<name>";
    }
    const std::set<std::string> loaded = loadedJobs();
    std::vector<std::string> unloaded;
    for (const Automation& automation : enabled) {
        if (!loaded.contains(AutomationName::jobLabel(automation.name)))
            unloaded.push_back(automation.name);
    }
    if (!unloaded.empty()) {
        finding.state = State::broken;
        finding.detail += "\nno job is loaded, so nothing starts: " + Text::join(unloaded, ", ");
        finding.remedy += finding.remedy.empty() ? "" : "\n";
        finding.remedy += "To load the job again: mervo run auto.enable name=<name>; who would start it, \"Jobs\" says";
    }
    return finding;
}

Finding shell()
{
    const HarnessConfig config = HarnessConfig::load();
    const auto database = MervoDB::existing(std::chrono::seconds(2));
    const std::vector<PolicyRule> rules = database ? RuleStore(database).all() : std::vector<PolicyRule>();
    const auto runs = [&](const char* tool) {
        const Args args{{"name", "any"}, {"command", "any"}};
        return ActionPolicy::decide(tool, Effect::create, args, config.autonomyMode, rules, 0, config.dailyMutationCap)
                   .decision
            == ActionPolicy::Decision::automatic;
    };
    Finding finding;
    finding.state = State::works;
    if (runs("auto.add") || runs("auto.edit")) {
        finding.state = State::limited;
        finding.detail = fmt::format("in {} an agent that has only these tools gets a shell through a script "
                                     "automation: no rule holds auto.* back",
            rawValue(config.autonomyMode));
        finding.remedy = "To be asked first: add a rule that asks for auto.*, or mervo autonomy panic";
    } else {
        finding.detail = "no agent gets a shell through a script automation without you";
    }
    return finding;
}

} // namespace mervo::Doctor
