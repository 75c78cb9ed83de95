#pragma once

#include <cstdint>
#include <string>

namespace mervo {

/// One run of an automation, from start to end: what the job of an automation starts. It is a scheduler and no tool;
/// the gate is met by whatever the run does.
class RondelRunner {
public:
    /// Runs the automation, unless it is paused (`force` passes that) or another run of it holds the lock. Waits for
    /// its end and writes that to the log and the state. A request to end (SIGTERM, SIGINT, SIGHUP) ends what was
    /// started, writes 128 and its number, and gives the lock back.
    ///
    /// 0 for every run that came to a decision, also a skipped or failed one; 1, with a line on standard error, when
    /// there is no such automation, and 1 for a script without a command. In a process that has no other threads.
    static std::int32_t runOnce(const std::string& name, bool force);
};

} // namespace mervo
