#pragma once

#include "core/automations/launch/RunLog.h"
#include "platform/end_request.h"

#include <chrono>
#include <filesystem>
#include <functional>
#include <string_view>

/// The file by which a run in a terminal tells that it is over.
namespace mervo::DoneSignal {

/// The exit code that its text means: its digits as one number; 1 if there are none, or too many for 32 bits.
int code(std::string_view text);

struct Wait {
    const std::filesystem::path& file;
    std::chrono::seconds timeout; ///< the run's; the wait is two minutes longer
    std::function<bool()> isGone; ///< whether the terminal session is known to have ended
};

/// The run's exit code, once the file is there, the deadline has passed (124), the session has gone without it (1), or
/// this process was asked to end (128 and the signal's number). What is not told by the file is said in the log.
int wait(const Wait& wait, platform::EndRequest& request, const RunLog& log);

} // namespace mervo::DoneSignal
