#include "platform/desk/applications/eventkit/OwnProgram.h"

#include "platform/desk/applications/eventkit/EventValues.h"
#include "platform/desk/running/RunningApplications.h"
#include "platform/desk/settings/CommandWords.h"
#include "platform/process.h"
#include "platform/programs.h"

#include <chrono>
#include <fmt/format.h>

namespace mervo::desk {
namespace {

using EventValues::refuse;

constexpr std::chrono::milliseconds kPatience{2000}; // a program that could not be started says so by then

std::string ownProgram(DeskApplication application, Sections sections)
{
    try {
        const RunningApplications applications(Configuration::load(sections));
        const std::string program = applications.ownProgram(application);
        return program.empty() && application == DeskApplication::reminders
            ? applications.ownProgram(DeskApplication::calendar)
            : program;
    } catch (const ConfigurationError& error) {
        refuse(error.what());
    }
}

} // namespace

void showOwnProgram(DeskApplication application, Sections sections)
{
    const std::string_view name = identityOf(application).name;
    const std::string program = ownProgram(application, sections);
    if (program.empty()) {
        refuse(fmt::format(
            "No program of the owner’s shows {0} here: name one in desk.toml ([applications], {0} = …).", name));
    }
    const auto file = platform::findProgram(program);
    if (file.empty())
        refuse(fmt::format("{} is the owner’s {}, and it is not installed.", program, name));
    try {
        const auto outcome = platform::runDetached({.program = file.string(), .arguments = {}, .input = {}}, kPatience);
        if (outcome && outcome->status != 0)
            refuse(fmt::format("{} cannot be shown. {}", name, howItEnded(program, *outcome)));
    } catch (const platform::NotStarted& failure) {
        refuse(fmt::format("{} cannot be shown: {} cannot be started ({}).", name, program, failure.what()));
    }
}

} // namespace mervo::desk
