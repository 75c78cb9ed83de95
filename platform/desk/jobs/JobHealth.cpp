#include "platform/desk/jobs/JobHealth.h"

#include "platform/desk/health/Findings.h"
#include "platform/desk/jobs/JobSettings.h"
#include "platform/jobs/OwnJobs.h"
#include "platform/jobs/SystemdJobs.h"
#include "platform/programs.h"

#include <cstdlib>
#include <fmt/format.h>
#include <utility>

namespace mervo::desk {
namespace {

Finding finding(Finding::State state, std::string detail, std::string remedy = {})
{
    Finding finding = makeFinding("desk.jobs", "Jobs", std::move(detail), std::move(remedy));
    finding.state = state;
    return finding;
}

bool hasDisplay()
{
    const auto isSet = [](const char* name) {
        const char* value = std::getenv(name);
        return value != nullptr && *value != '\0';
    };
    return isSet("DISPLAY") || isSet("WAYLAND_DISPLAY");
}

Finding ofSystemd()
{
    if (jobs::systemd::lingers())
        return finding(Finding::State::works, "systemd starts them, whether or not you are logged in");
    return finding(Finding::State::limited, "systemd starts them while you are logged in",
        "To have them run when nobody is: loginctl enable-linger");
}

Finding ofOwnRunner()
{
    if (hasDisplay())
        return finding(Finding::State::works, "the bundle's own runner starts them, from your log-in on");
    return finding(Finding::State::limited,
        "the bundle's own runner starts them while it lives; here is neither a desktop, whose log-in starts it, nor "
        "systemd's manager",
        fmt::format("Start it when the machine starts: {} --login", platform::platformProgram("launchd").string()));
}

/// `loaded` counts the jobs that somebody starts all the same, since they were loaded before.
Finding ofNoRunner(std::size_t loaded)
{
    return finding(Finding::State::limited,
        "desk.toml wants no runner of jobs: automations are not run on their schedule"
            + (loaded > 0 ? fmt::format(", except those that were loaded before ({})", loaded) : std::string()),
        "To have them run: set runner = \"auto\" in [jobs] of desk.toml, then pause and resume the automations");
}

} // namespace

std::vector<Finding> examineJobs(const Configuration& configuration)
{
    const JobRunner chosen = jobRunner(configuration);
    const bool hasManager = jobs::systemd::runs();
    const std::size_t own = jobs::own::loaded().size(), units = jobs::systemd::loaded().size();
    const bool hasRunner = jobs::own::runner().process != 0;
    if (chosen == JobRunner::none)
        return {ofNoRunner((hasRunner ? own : 0) + (hasManager ? units : 0))};
    if (own > 0 && !hasRunner)
        return {finding(Finding::State::broken,
            fmt::format("nobody starts the jobs that wait ({}): the own runner does not live", own),
            fmt::format("{} resume", platform::platformProgram("launchctl").string()))};
    if (units > 0 && !hasManager)
        return {finding(Finding::State::broken,
            fmt::format("nobody starts the jobs that wait ({}): no manager of systemd answers", units),
            "Log in in a way that starts systemd's manager for you; or set runner = \"own\" in [jobs] of desk.toml, "
            "then "
            "pause and resume the automations")};
    if (chosen == JobRunner::systemd && !hasManager)
        return {finding(Finding::State::broken, "desk.toml wants systemd to start them, and no manager of it answers",
            "Set runner = \"auto\" in [jobs] of desk.toml")};
    if (own + units == 0)
        return {finding(Finding::State::works, "none is loaded")};
    return {chosen != JobRunner::own && hasManager ? ofSystemd() : ofOwnRunner()};
}

} // namespace mervo::desk
