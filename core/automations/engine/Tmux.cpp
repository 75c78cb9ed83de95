#include "core/automations/engine/Tmux.h"

#include "core/automations/model/AutomationName.h"
#include "core/automations/model/RunPaths.h"
#include "platform/programs.h"

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

int Tmux::run(std::vector<std::string> arguments) const
{
    const std::filesystem::path tmux = program();
    if (tmux.empty())
        return -1;
    arguments.insert(arguments.begin(), {"-S", socket_.string()});
    try {
        return run_({.program = tmux.string(), .arguments = std::move(arguments)}).status;
    } catch (const platform::NotStarted&) {
        return -1;
    }
}

bool Tmux::hasSession(std::string_view automation) const
{
    return run({"has-session", "-t", target(automation)}) == 0;
}

bool Tmux::killSession(std::string_view automation) const
{
    return run({"kill-session", "-t", target(automation)}) == 0;
}

} // namespace mervo
