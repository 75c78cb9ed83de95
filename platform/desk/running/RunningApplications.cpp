#include "platform/desk/running/RunningApplications.h"

#include "platform/desk/running/Presence.h"
#include "platform/desk/running/Processes.h"
#include "platform/desk/session/Session.h"

#include <filesystem>
#include <fmt/format.h>

namespace mervo::desk {
namespace {

/// What the desktop calls an application's kind; null where a default program would be one for everything.
const char* contentTypeOf(DeskApplication application)
{
    switch (application) {
    case DeskApplication::mail:
        return "x-scheme-handler/mailto";
    case DeskApplication::calendar:
        return "text/calendar";
    case DeskApplication::contacts:
        return "text/vcard";
    case DeskApplication::reminders:
    case DeskApplication::notes:
    case DeskApplication::messages:
    case DeskApplication::finder:
    case DeskApplication::systemEvents:
        return nullptr;
    }
    return nullptr;
}

/// Without the module there is no desktop to ask, and no default.
std::string defaultProgram(const char* contentType)
{
    try {
        return contentType == nullptr ? std::string() : session().defaultProgram(contentType);
    } catch (const std::runtime_error&) {
        return {};
    }
}

void askToQuit(std::string_view name, const std::string& program, std::span<const pid_t> processes)
{
    std::string bus, display;
    try {
        bus = session().askToQuit(processes);
        display = bus.empty() ? bus : session().closeWindows(processes);
    } catch (const std::runtime_error& error) {
        throw RunningError(error.what());
    }
    if (!bus.empty() && !display.empty())
        throw RunningError(fmt::format("{} cannot be asked to quit: {}, and {}; close {} yourself.", name, bus, display,
            std::filesystem::path(program).filename().string()));
}

} // namespace

std::string RunningApplications::ownProgram(DeskApplication application) const
{
    const auto named = named_.find(application);
    return named != named_.end() ? named->second : defaultProgram(contentTypeOf(application));
}

std::vector<pid_t> RunningApplications::ownProcesses(DeskApplication application) const
{
    const std::string program = ownProgram(application);
    return program.empty() ? std::vector<pid_t>() : processesOf(program);
}

bool RunningApplications::isRunning(DeskApplication application) const
{
    return alwaysRuns(application) || presenceOf(application) || !ownProcesses(application).empty();
}

pid_t RunningApplications::processOf(DeskApplication application) const
{
    if (const auto presence = presenceOf(application))
        return *presence;
    const auto own = ownProcesses(application);
    return own.empty() ? 0 : own.front();
}

void RunningApplications::start(DeskApplication application) const
{
    if (!isRunning(application))
        startPresence(application);
}

void RunningApplications::terminate(DeskApplication application) const
{
    const std::string_view name = identityOf(application).name;
    if (alwaysRuns(application))
        throw RunningError(fmt::format("{} always runs.", name));
    endPresence(application);
    const auto processes = ownProcesses(application);
    if (!processes.empty())
        askToQuit(name, ownProgram(application), processes);
}

} // namespace mervo::desk
