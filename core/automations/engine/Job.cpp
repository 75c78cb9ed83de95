#include "core/automations/engine/Job.h"

#include "core/automations/engine/EngineError.h"
#include "core/automations/model/AutomationDraft.h"
#include "core/automations/model/AutomationName.h"
#include "core/automations/model/RunPaths.h"
#include "platform/files.h"
#include "platform/folders.h"
#include "platform/programs.h"
#include "platform/propertylist/PropertyList.h"
#include "platform/unified_log.h"

#include <algorithm>
#include <cstdlib>
#include <fmt/format.h>
#include <limits>
#include <utility>

namespace mervo {

namespace {

namespace fs = std::filesystem;
using platform::PropertyList;
using Array = PropertyList::Array;
using Dictionary = PropertyList::Dictionary;

constexpr std::int64_t kMinute = 60; // seconds

PropertyList daily(std::int64_t hour, std::int64_t minute)
{
    return {Dictionary{{"Hour", {hour}}, {"Minute", {minute}}}};
}

void add(Dictionary& job, const Automation::Interval& every)
{
    constexpr std::int64_t kMost = std::numeric_limits<std::int64_t>::max() / kMinute;
    job["StartInterval"] = {std::clamp<std::int64_t>(every.minutes, 1, kMost) * kMinute};
}

void add(Dictionary& job, const Automation::Calendar& at)
{
    job["StartCalendarInterval"] = daily(at.hour, at.minute);
}

void add(Dictionary& job, const Automation::Hours& at)
{
    Array times;
    for (const std::int64_t hour : at.hours)
        times.push_back(daily(hour, at.minute));
    if (!times.empty())
        job["StartCalendarInterval"] = {std::move(times)};
}

bool isHomeNamed()
{
    const char* home = std::getenv("MERVO_HOME");
    return home != nullptr && *home != '\0';
}

} // namespace

Job::Job(std::string_view name, const fs::path& home, RunProgram run)
    : name_(name)
    , home_(home)
    , run_(std::move(run))
{
}

fs::path Job::folder()
{
    return platform::userHome() / "Library/LaunchAgents";
}

fs::path Job::file() const
{
    return folder() / (AutomationName::jobLabel(name_) + ".plist");
}

std::string Job::text(const Automation::Schedule& schedule) const
{
    const std::string log = RunPaths(home_, name_).jobLog().string();
    Dictionary job{{"Label", {AutomationName::jobLabel(name_)}},
        {"ProgramArguments", {Array{{mervoBinary().string()}, {std::string("auto-run")}, {name_}}}},
        {"RunAtLoad", {false}}, {"ProcessType", {std::string("Interactive")}}, {"StandardOutPath", {log}},
        {"StandardErrorPath", {log}}};
    if (isHomeNamed())
        job["EnvironmentVariables"] = {Dictionary{{"MERVO_HOME", {home_.string()}}}};
    std::visit([&](const auto& when) { add(job, when); }, schedule);
    return platform::propertyListXml({std::move(job)});
}

bool Job::isOutdated() const
{
    std::error_code unreadable;
    if (!fs::exists(file(), unreadable))
        return false;
    const auto bytes = platform::readFile(file());
    const auto job = bytes ? platform::readPropertyList(*bytes) : std::nullopt;
    if (!job)
        return true;
    const auto* arguments = job->find<Array>("ProgramArguments");
    const auto* program = arguments == nullptr || arguments->empty() ? nullptr : arguments->front().as<std::string>();
    const auto* log = job->find<std::string>("StandardOutPath");
    return program == nullptr || *program != mervoBinary().string() || log == nullptr
        || *log != RunPaths(home_, name_).jobLog().string();
}

void Job::install(const Automation::Schedule& schedule) const
{
    const fs::path path = file();
    if (const auto error = platform::replaceFile(path, text(schedule)))
        throw EngineError::failed(fmt::format("\"{}\" could not be written: {}", path.string(), error.message()));
    unload();
    const auto outcome = launchctl("bootstrap");
    if (outcome.status != 0) {
        platform::logError("RondelEngine",
            fmt::format("launchctl bootstrap of \"{}\" failed ({}): {}", path.string(), outcome.status,
                outcome.error + outcome.output));
    }
}

void Job::unload() const
{
    launchctl("bootout");
}

void Job::uninstall() const
{
    unload();
    std::error_code ignored;
    fs::remove(file(), ignored);
}

platform::Outcome Job::launchctl(const std::string& verb) const
{
    try {
        return run_({.program = platform::platformProgram("launchctl").string(),
            .arguments = {verb, fmt::format("gui/{}", platform::userNumber()), file().string()}});
    } catch (const platform::NotStarted& failure) {
        platform::Outcome outcome;
        outcome.error = failure.what();
        return outcome;
    }
}

} // namespace mervo
