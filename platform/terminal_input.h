#pragma once

#include "platform/secret.h"

#include <string>

/// Input from a person at a terminal that must not be echoed.
namespace mervo::platform {

/// Standard input is a terminal.
bool isTerminalInput();

/// Shows the prompt and reads one line without showing it, without its line end. The terminal is as it was afterwards,
/// also when a signal ends the program. Empty at the end of input.
Secret readHidden(const std::string& prompt);

} // namespace mervo::platform
