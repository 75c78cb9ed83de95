#pragma once

#include "platform/desk/settings/Configuration.h"
#include "platform/desk/terminal/KnownTerminals.h"

#include <string>
#include <vector>

namespace mervo::desk {

/// A terminal that is there.
struct OwnerTerminal {
    std::string program; ///< the path of its executable
    std::vector<std::string> words; ///< the owner's own, behind the program
    KnownTerminal kind; ///< how it takes a command
    std::string source; ///< who named it: "desk.toml", "$TERMINAL", "x-terminal-emulator"; empty: found by its name
};

/// The owner's terminal: `command` of [terminal], else $TERMINAL, else x-terminal-emulator, else the first known one
/// that is installed and made for this session's display. Behind an unknown program of desk.toml the command stands as
/// it is; another unknown one takes it behind "-e". Throws TerminalError when there is none, and when the program of
/// desk.toml is not there.
OwnerTerminal ownerTerminal(const Configuration& configuration);

/// A terminal by a path: a program, or a desktop entry (Desktop Entry Specification), whose command line is taken
/// without its field codes. Throws TerminalError.
OwnerTerminal terminalAt(const std::string& path);

/// Throws TerminalError where windows cannot be opened: neither DISPLAY nor WAYLAND_DISPLAY is set.
void requireDisplay();

} // namespace mervo::desk
