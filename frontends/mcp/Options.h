#pragma once

#include "frontends/mcp/ToolNames.h"

#include <optional>

namespace mervo::mcp {

/// What the command line asks for.
struct Options {
    std::optional<Naming> naming; ///< empty: by the client's name
    std::optional<int> exitStatus; ///< set when there is nothing to serve: help, version, or a usage error (2)
};

/// Reads the command line; prints help and version on standard output, a usage error on standard error.
Options readOptions(int argc, const char* const* argv);

} // namespace mervo::mcp
