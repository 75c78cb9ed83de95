#pragma once

#include <cstdint>
#include <string>
#include <vector>

/// Starts a program that is responsible for itself: a request for consent names it, and not the program that started
/// it.
namespace mervo::DisclaimedRun {

struct Output {
    std::int32_t code = -1; ///< exit status; -1 when it died by a signal or could not be started
    std::string stdout_; ///< what it printed, empty when that is not UTF-8; or why it could not be started
};

/// Blocks until the program has ended. Standard error is inherited. Never throws; any thread.
Output run(const std::string& path, const std::vector<std::string>& arguments);

} // namespace mervo::DisclaimedRun
