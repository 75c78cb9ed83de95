#include "core/automations/engine/Tmux.h"

#include "core/automations/model/AutomationName.h"
#include "core/automations/model/RunPaths.h"
#include "core/foundation/Text.h"
#include "platform/programs.h"

#include <charconv>
#include <utility>

namespace mervo {

Tmux::Tmux(const std::filesystem::path& home, RunProgram run)
    : socket_(RunPaths::tmuxSocket(home))
    , run_(std::move(run))
{
}

std::filesystem::path Tmux::program()
{
    for (const char* candidate : {"/opt/homebrew/bin/tmux", "/usr/local/bin/tmux", "/usr/bin/tmux"}) {
        if (platform::canRun(candidate))
            return candidate;
    }
    return {};
}

std::string Tmux::target(std::string_view automation)
{
    return "=" + AutomationName::sessionName(automation);
}

std::optional<platform::Outcome> Tmux::outcome(std::vector<std::string> arguments) const
{
    const std::filesystem::path tmux = program();
    if (tmux.empty())
        return std::nullopt;
    arguments.insert(arguments.begin(), {"-S", socket_.string()});
    try {
        return run_({.program = tmux.string(), .arguments = std::move(arguments)});
    } catch (const platform::NotStarted&) {
        return std::nullopt;
    }
}

int Tmux::run(std::vector<std::string> arguments) const
{
    const auto ended = outcome(std::move(arguments));
    return ended ? ended->status : -1;
}

bool Tmux::hasSession(std::string_view automation) const
{
    return run({"has-session", "-t", target(automation)}) == 0;
}

bool Tmux::isWithoutSession(std::string_view automation) const
{
    return run({"has-session", "-t", target(automation)}) == 1;
}

std::vector<std::int64_t> Tmux::paneProcesses(std::string_view automation) const
{
    const auto listed = outcome({"list-panes", "-s", "-t", target(automation), "-F", "#{pane_pid}"});
    std::vector<std::int64_t> processes;
    for (const std::string& line : Text::split(listed ? listed->output : std::string(), '\n')) {
        std::int64_t process = 0;
        if (std::from_chars(line.data(), line.data() + line.size(), process).ec == std::errc())
            processes.push_back(process);
    }
    return processes;
}

bool Tmux::killSession(std::string_view automation) const
{
    return run({"kill-session", "-t", target(automation)}) == 0;
}

} // namespace mervo
