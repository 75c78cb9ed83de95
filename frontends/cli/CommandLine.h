#pragma once

#include "frontends/cli/Command.h"

#include <span>
#include <string>

namespace mervo::cli {

/// The whole program behind main: finds the command, runs it, and turns what it throws into one line on standard error
/// and an exit code. `words` are the program's arguments without its own name. Never throws.
[[nodiscard]] ExitCode runCommandLine(std::span<const std::string> words, Io& io) noexcept;

} // namespace mervo::cli
