#include "core/automations/launch/DirectRun.h"
#include "core/automations/launch/RunEnvironment.h"
#include "core/automations/supervisor/FailureMail.h"
#include "core/automations/supervisor/Workload.h"

#include <filesystem>
#include <fmt/format.h>

namespace mervo {

namespace {

int exitCode(const RunContext& run)
{
    std::error_code unreadable;
    if (!std::filesystem::is_directory(run.settings.cwd, unreadable)) {
        run.log.stamped(fmt::format("not started: the working folder \"{}\" is not there", run.settings.cwd));
        return RunExit::kNotStarted;
    }
    return DirectRun::attend({.program = "/bin/bash",
                                 .arguments = {"-c", run.settings.command},
                                 .folder = run.settings.cwd,
                                 .environment = RunEnvironment::ofScript(run.searchPath)},
        {}, run.paths, run.request, run.log);
}

} // namespace

bool runScript(const RunContext& run)
{
    if (run.settings.command.empty()) {
        run.log.stamped(fmt::format("script loop '{}' has no command - nothing to run", run.name));
        return false;
    }
    run.log.line(fmt::format("===== rondel: {} @ {} (script) =====", run.name, RunLog::now()));
    const int code = exitCode(run);
    run.log.end(run.name, code);
    run.record(code);
    if (code != 0 && run.settings.notifyOnFail && run.request.signal() == 0) // whoever asked for its end knows
        FailureMail::send(run, code);
    return true;
}

} // namespace mervo
