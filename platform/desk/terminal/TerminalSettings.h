#pragma once

#include "platform/desk/settings/Configuration.h"

#include <string>
#include <vector>

/// The owner's terminal in desk.toml:
///
///     [terminal]
///     command = ["foot"] # its program, with words of the owner's own behind it
namespace mervo::desk {

void checkTerminalSection(const Table& terminal);
inline constexpr Section kTerminalSection{"terminal", "[terminal]", checkTerminalSection};

/// Program and arguments; empty: none is named.
std::vector<std::string> terminalCommand(const Configuration& configuration);

} // namespace mervo::desk
