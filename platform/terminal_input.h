#pragma once

#include "platform/secret.h"

#include <string>

/// A person at a terminal, for what must not be seen.
namespace mervo::platform {

/// Standard input is a terminal.
bool isTerminalInput();

/// Shows the prompt and reads one line without showing it, without its line end. The terminal is as it was afterwards,
/// also when a signal ends the program. Empty at the end of input.
Secret readHidden(const std::string& prompt);

} // namespace mervo::platform
