#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

/// Runs an AppleScript source with positional arguments and turns what the host prints into one clean outcome.
namespace mervo::OSAScript {

struct Result {
    bool ok = false; ///< the script ran and exited with status 0
    std::string output = {}; ///< standard output, trimmed at both ends; empty when it is not UTF-8
    std::string error = {}; ///< the cleaned error line; may hold a warning when `ok`
    std::int32_t code = -1; ///< exit status, -1 when the script never ran or died by a signal
};

/// Blocks until the script has ended; there is no time limit. Never throws; any thread, also several at once.
Result run(std::string_view script, const std::vector<std::string>& argv);

/// The one line of a script host's standard error that is meant for people.
std::string cleanedError(std::string_view standardError);

} // namespace mervo::OSAScript
