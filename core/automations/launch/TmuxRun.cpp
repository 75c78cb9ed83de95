#include "core/automations/launch/TmuxRun.h"

#include "core/automations/engine/Tmux.h"
#include "core/automations/launch/DoneSignal.h"
#include "core/automations/launch/RunEnvironment.h"
#include "core/automations/launch/WrapperScript.h"
#include "core/automations/model/AutomationName.h"
#include "core/foundation/Text.h"
#include "platform/process.h"

#include <fmt/format.h>

namespace mervo::TmuxRun {

namespace {

Tmux tmuxOf(const std::filesystem::path& home)
{
    return Tmux(home, [](platform::Command command) {
        command.environment = RunEnvironment::ofHelpers(); // the server keeps that of whoever starts it
        return platform::run(command);
    });
}

/// With what does not heed that its terminal is gone.
bool close(const Tmux& tmux, const std::string& name, const std::vector<std::int64_t>& processes)
{
    constexpr std::chrono::milliseconds kMercy(2000);
    const bool isClosed = tmux.killSession(name);
    for (const std::int64_t process : processes)
        platform::endSession(process, kMercy);
    return isClosed;
}

bool open(const Tmux& tmux, const AgentRun& run)
{
    WrapperScript::write(run); // without it the session ends at once
    close(tmux, run.name, tmux.paneProcesses(run.name));
    return tmux.run({"new-session", "-d", "-s", AutomationName::sessionName(run.name), "-x", "220", "-y", "50",
               "exec bash " + Text::shellQuoted(run.paths.wrapper().string())})
        == 0;
}

} // namespace

bool run(const AgentRun& run, platform::EndRequest& request, const RunLog& log, const RecordExit& record)
{
    if (Tmux::program().empty())
        return false;
    const Tmux tmux = tmuxOf(run.home);
    if (!open(tmux, run)) {
        log.stamped("tmux session failed - falling back to direct headless");
        return false;
    }
    log.stamped(
        fmt::format("live run attachable: tmux -S {} attach -t {}  (or: Mervo cockpit → Automations → Open live run)",
            RunPaths::tmuxSocket(run.home).string(), AutomationName::sessionName(run.name)));
    run.started();
    const auto processes = tmux.paneProcesses(run.name);
    const auto isGone = [&] { return tmux.isWithoutSession(run.name); };
    const int code = DoneSignal::wait({run.paths.done(), run.timeout, isGone}, request, log);
    close(tmux, run.name, processes);
    record(code);
    return true;
}

void endLeftover(const std::filesystem::path& home, const std::string& name, const RunLog& log)
{
    std::error_code unreadable;
    if (!std::filesystem::exists(RunPaths::tmuxSocket(home), unreadable))
        return;
    const Tmux tmux = tmuxOf(home);
    if (close(tmux, name, tmux.paneProcesses(name)))
        log.stamped("closed the session that the run before had left");
}

} // namespace mervo::TmuxRun
