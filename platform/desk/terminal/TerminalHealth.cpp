#include "platform/desk/terminal/TerminalHealth.h"

#include "platform/desk/health/Findings.h"
#include "platform/desk/terminal/OwnerTerminal.h"
#include "platform/desk/terminal/TerminalError.h"
#include "platform/desk/terminal/TerminalSettings.h"
#include "platform/screens.h"

#include <fmt/format.h>

namespace mervo::desk {
namespace {

/// Without one nothing but visible runs is lost; one that desk.toml names must be there.
Finding terminalFinding(const Configuration& configuration)
{
    Finding finding = makeFinding("desk.terminal", "Terminal", "");
    try {
        const OwnerTerminal terminal = ownerTerminal(configuration);
        finding.detail =
            terminal.source.empty() ? terminal.program : fmt::format("{}, from {}", terminal.program, terminal.source);
    } catch (const TerminalError& error) {
        const bool isNamed = !terminalCommand(configuration).empty();
        finding.state = isNamed ? Finding::State::broken : Finding::State::limited;
        finding.detail = isNamed ? "the terminal that desk.toml names is not there"
                                 : "none: agents cannot run in a window of their own";
        finding.remedy = error.what();
    }
    return finding;
}

Finding screensFinding()
{
    std::string detail;
    for (const platform::Screen& screen : platform::screens()) {
        detail += fmt::format("{}{} {}x{}{}", detail.empty() ? "" : ", ", screen.name, screen.width, screen.height,
            screen.isMain ? " (main)" : "");
    }
    Finding finding = makeFinding("desk.screens", "Screens", detail);
    if (!detail.empty())
        return finding;
    finding.state = Finding::State::limited;
    try {
        requireDisplay();
        finding.detail = "the display lists none; windows open where the desktop puts them";
    } catch (const TerminalError& error) {
        finding.detail = error.what();
    }
    return finding;
}

} // namespace

std::vector<Finding> examineTerminalSettings(const Configuration& configuration)
{
    return {terminalFinding(configuration), screensFinding()};
}

} // namespace mervo::desk
