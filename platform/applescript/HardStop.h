#pragma once

#include <chrono>
#include <csignal>
#include <ctime>

namespace mervo::applescript {

/// Ends the process once the current thread has used this much processor time, with a line on standard error and exit
/// status 1. For work that does not check Limits, such as a library that parses a message; code that does check them
/// fails earlier, and its script can clean up. Only one may exist at a time.
class HardStop {
public:
    explicit HardStop(std::chrono::milliseconds processorTime) noexcept;
    ~HardStop();
    HardStop(const HardStop&) = delete;
    HardStop& operator=(const HardStop&) = delete;

private:
    timer_t timer_{};
    bool hasTimer_ = false;
    struct sigaction before_ { };
};

} // namespace mervo::applescript
