#include "platform/launchctl/Commands.h"

#include "platform/desk/applications/Desk.h"
#include "platform/desk/jobs/JobSettings.h"
#include "platform/jobs/Job.h"
#include "platform/jobs/JobPlaces.h"
#include "platform/jobs/OwnJobs.h"
#include "platform/jobs/RunRecord.h"
#include "platform/jobs/SystemdJobs.h"
#include "platform/launchctl/Target.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <ctime>
#include <filesystem>
#include <fmt/chrono.h>
#include <fmt/format.h>

namespace mervo::jobs {

namespace {

/// Who shall look after jobs, never `automatic`. A mistake in desk.toml keeps no job from running.
desk::JobRunner chosenRunner(const Streams& streams)
{
    auto runner = desk::JobRunner::automatic;
    try {
        runner = desk::jobRunner(desk::Configuration::load(desk::deskSections()));
    } catch (const desk::ConfigurationError& error) {
        streams.notes << error.what() << " Jobs are loaded as if [jobs] were not there.\n";
    }
    if (runner == desk::JobRunner::automatic)
        return systemd::runs() ? desk::JobRunner::systemd : desk::JobRunner::own;
    return runner;
}

ReadJob readNamed(const std::string& path)
{
    try {
        return readJob(path);
    } catch (const JobError& error) {
        throw CommandError(Exit::failed, fmt::format("{}: {}", path, error.what()));
    }
}

[[noreturn]] void refuseUnloaded(const std::string& label)
{
    throw CommandError(Exit::notLoaded, fmt::format("{} is not loaded.", label));
}

void bootstrap(const std::vector<std::string>& words, const Streams& streams)
{
    const ReadJob read = readNamed(target(words));
    for (const std::string& key : read.unknown)
        streams.notes << fmt::format("{}: the key {} means nothing here and is left out.\n", read.job.label, key);
    if (own::isLoaded(read.job.label) || systemd::isLoaded(read.job.label))
        throw CommandError(Exit::alreadyLoaded,
            fmt::format("{} is loaded already; \"launchctl bootout\" unloads it.", read.job.label));
    switch (chosenRunner(streams)) {
    case desk::JobRunner::systemd:
        return systemd::load(read.job);
    case desk::JobRunner::none:
        streams.notes << fmt::format("{}: not loaded, since desk.toml wants no runner of jobs.\n", read.job.label);
        return;
    case desk::JobRunner::automatic:
    case desk::JobRunner::own:
        own::load(read.job);
    }
}

void bootout(const std::vector<std::string>& words, const Streams&)
{
    const std::string label = labelOf(target(words));
    const bool wasOwn = isLabel(label) && own::unload(label);
    const bool wasSystemd = isLabel(label) && systemd::unload(label);
    if (!wasOwn && !wasSystemd)
        refuseUnloaded(label);
}

void kickstart(const std::vector<std::string>& words, const Streams& streams)
{
    const std::string label = labelOf(target(words));
    if (isLabel(label) && own::isLoaded(label)) {
        const auto last = lastRun(runsFolder() / label);
        if (last && last->state == LastRun::State::running) {
            streams.notes << fmt::format("{} runs already, as process {}.\n", label, last->number);
            return;
        }
        own::requestRun(label);
    } else if (isLabel(label) && systemd::isLoaded(label)) {
        systemd::requestRun(label);
    } else {
        refuseUnloaded(label);
    }
}

void resume(const std::vector<std::string>& words, const Streams& streams)
{
    if (!words.empty())
        throw CommandError(Exit::usage, "resume takes no argument.");
    if (!own::loaded().empty() && chosenRunner(streams) != desk::JobRunner::none)
        own::startRunner();
}

/// The columns PID and STATUS of a job of the own runner.
std::array<std::string, 2> runColumns(const std::string& label)
{
    const auto last = lastRun(runsFolder() / label);
    if (!last)
        return {"-", "-"};
    const std::string number = std::to_string(last->number);
    switch (last->state) {
    case LastRun::State::running:
        return {number, "-"};
    case LastRun::State::exited:
        return {"-", number};
    case LastRun::State::signalled:
        return {"-", '-' + number};
    }
    return {};
}

void list(const std::vector<std::string>& words, const Streams& streams)
{
    if (!words.empty())
        throw CommandError(Exit::usage, "list takes no argument.");
    streams.out << "PID\tSTATUS\tRUNNER\tLABEL\n";
    for (const std::string& label : own::loaded()) {
        const auto [process, status] = runColumns(label);
        streams.out << fmt::format("{}\t{}\town\t{}\n", process, status, label);
    }
    for (const std::string& label : systemd::loaded())
        streams.out << fmt::format("-\t-\tsystemd\t{}\n", label);
}

std::string timesOf(const Job& job)
{
    std::string text;
    if (job.interval)
        text += fmt::format("interval: {} s\n", job.interval->count());
    if (job.calendar.empty())
        return text;
    const auto now = std::chrono::system_clock::now();
    if (const auto next = calendarOf(job.calendar)(now)) {
        const std::time_t time = std::chrono::floor<std::chrono::seconds>(*next).time_since_epoch().count();
        text += fmt::format("next time of its calendar: {:%Y-%m-%d %H:%M}\n", fmt::localtime(time));
    }
    return text;
}

std::string runOf(const std::string& label)
{
    const auto last = lastRun(runsFolder() / label);
    if (!last)
        return "last run: none known\n";
    switch (last->state) {
    case LastRun::State::running:
        return fmt::format("running: process {}\n", last->number);
    case LastRun::State::exited:
        return fmt::format("last run: ended with status {}\n", last->number);
    case LastRun::State::signalled:
        return fmt::format("last run: ended by signal {}\n", last->number);
    }
    return {};
}

void print(const std::vector<std::string>& words, const Streams& streams)
{
    const std::string label = labelOf(target(words));
    const bool isOwn = isLabel(label) && own::isLoaded(label);
    if (!isOwn && !(isLabel(label) && systemd::isLoaded(label)))
        refuseUnloaded(label);
    const std::filesystem::path file = isOwn ? own::propertyList(label) : systemd::propertyList(label);
    streams.out << fmt::format("label: {}\nproperty list: {}\nrunner: {}\n", label, file.string(),
        isOwn ? own::runner().process > 0 ? "own" : "own, which does not run" : "systemd");
    streams.out << (isOwn ? runOf(label) : fmt::format("for its runs: systemctl --user status {}\n", label));
    const Job job = readNamed(file).job;
    for (const std::string& argument : job.arguments)
        streams.out << "argument: " << argument << '\n';
    for (const auto& [name, value] : job.environment)
        streams.out << "variable: " << name << '=' << value << '\n';
    for (const auto& [title, path] : {std::pair("folder", job.workingDirectory),
             std::pair("standard output", job.standardOutput), std::pair("standard error", job.standardError)}) {
        if (!path.empty())
            streams.out << title << ": " << path << '\n';
    }
    streams.out << timesOf(job);
}

constexpr CommandOfJobs kCommands[] = {
    {"bootstrap", "gui/UID PROPERTY-LIST", "loads a job: from now on it is started at its times", bootstrap},
    {"bootout", "gui/UID PROPERTY-LIST|LABEL", "unloads a job; a run in progress goes on", bootout},
    {"kickstart", "gui/UID LABEL", "starts a job that is loaded, unless it runs", kickstart},
    {"resume", "", "starts the own runner again where it has jobs and does not live", resume},
    {"list", "", "the jobs that are loaded, and how their last run ended (-N: by signal N)", list},
    {"print", "gui/UID LABEL", "what is known of a job", print},
};

} // namespace

std::span<const CommandOfJobs> commands()
{
    return kCommands;
}

} // namespace mervo::jobs
