#pragma once

#include "frontends/cli/Command.h"

#include <string>

namespace mervo::cli {

/// The page of the program: every command with its words and its summary.
std::string helpOfAll();

/// The page of one command: usage, what it promises, examples, its options; in lines of `width` characters.
std::string helpOf(const Command& command, std::size_t width);

} // namespace mervo::cli
