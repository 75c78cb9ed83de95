#pragma once

#include <chrono>
#include <functional>

namespace mervo {

/// The wall clock for what a person reads, and the steady one for what must not jump with it.
struct Clock {
    std::function<std::chrono::system_clock::time_point()> wall = std::chrono::system_clock::now;
    std::function<std::chrono::steady_clock::time_point()> steady = std::chrono::steady_clock::now;
};

} // namespace mervo
