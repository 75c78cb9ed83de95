#pragma once

#include <chrono>
#include <csignal>
#include <ctime>

namespace mervo::applescript {

/// Ends the process when the current thread has used so much processor time, with a line of error on standard error and
/// exit status 1. For work that looks at no bound, such as a library that reads a message; what looks at Limits
/// fails there before, and its script can clean up. One at a time.
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
