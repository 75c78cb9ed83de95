#pragma once

#include "tools/cli/Command.h"

#include <string>

namespace mervo::cli {

/// The page of the program: every command with its words and its summary.
std::string helpOfAll();

/// The page of one command: usage, what it promises, its options, examples.
std::string helpOf(const Command& command);

} // namespace mervo::cli
