#include "core/automations/launch/Launch.h"

#include "core/automations/launch/AgentCommand.h"
#include "core/automations/launch/DirectRun.h"
#include "core/automations/launch/TmuxRun.h"
#include "core/automations/launch/VisibleRun.h"
#include "platform/attended.h"

#include <algorithm>
#include <fmt/format.h>

namespace mervo::Launch {

namespace {

namespace fs = std::filesystem;

std::uintmax_t length(const fs::path& file)
{
    std::error_code unreadable;
    const auto bytes = fs::file_size(file, unreadable);
    return unreadable ? 0 : bytes;
}

/// Why nothing can be started; empty if nothing is known to stand against it. A shell would go on elsewhere, or give
/// its reason where nobody reads it.
std::string obstacle(const AgentRun& run)
{
    std::error_code unreadable;
    if (!fs::is_directory(run.cwd, unreadable))
        return fmt::format("the working folder \"{}\" is not there", run.cwd);
    const bool isArgument = std::ranges::find(run.arguments, kPromptPlaceholder) != run.arguments.end();
    if (const auto bytes = length(run.paths.prompt()); isArgument && bytes > platform::longestArgument())
        return fmt::format("{} takes the prompt as an argument, which can have {} bytes; it has {}", run.client,
            platform::longestArgument(), bytes);
    return {};
}

} // namespace

void run(const AgentRun& run, platform::EndRequest& request, const RunLog& log, const RecordExit& record)
{
    const std::string reason = obstacle(run);
    if (const int signal = request.signal(); signal != 0 || !reason.empty()) {
        const int code = reason.empty() ? RunExit::kBySignal + signal : RunExit::kNotStarted;
        if (!reason.empty())
            log.stamped("not started: " + reason);
        log.end(run.name, code);
        record(code);
        return;
    }
    if (run.visible) {
        VisibleRun::run(run, request, log, record);
    } else if (!TmuxRun::run(run, request, log, record)) {
        DirectRun::run(run, request, log, record);
    }
}

void endLeftovers(const fs::path& home, const RunPaths& paths, const std::string& name, const RunLog& log)
{
    TmuxRun::endLeftover(home, name, log);
    VisibleRun::endLeftover(paths, log);
    DirectRun::endLeftover(paths, log);
}

} // namespace mervo::Launch
