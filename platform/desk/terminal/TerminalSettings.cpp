#include "platform/desk/terminal/TerminalSettings.h"

namespace mervo::desk {
namespace {

std::vector<std::string> readCommand(const Table& terminal)
{
    terminal.refuseUnknownKeys({"command"}, "of \"terminal\"");
    std::vector<std::string> command = terminal.texts("command");
    if (terminal.contains("command") && (command.empty() || command.front().empty()))
        terminal.fail("command", "\"command\" names no program.");
    return command;
}

} // namespace

void checkTerminalSection(const Table& terminal)
{
    readCommand(terminal);
}

std::vector<std::string> terminalCommand(const Configuration& configuration)
{
    const auto terminal = configuration.section(kTerminalSection);
    return terminal ? readCommand(*terminal) : std::vector<std::string>();
}

} // namespace mervo::desk
