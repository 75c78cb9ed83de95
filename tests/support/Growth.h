#pragma once

#include <algorithm>
#include <chrono>
#include <ctime>
#include <limits>
#include <string>
#include <string_view>

namespace mervo::test {

/// How much longer four times as much takes: about 4 when work grows with its input, 16 when it grows with the square.
/// Processor time of this thread, the best of some rounds, so that a busy machine does not count.
template <typename Work>
double growth(std::size_t size, Work work)
{
    const auto seconds = [&](std::size_t amount) {
        double best = std::numeric_limits<double>::max();
        for (int round = 0; round < 3; ++round) {
            timespec start{}, end{};
            clock_gettime(CLOCK_THREAD_CPUTIME_ID, &start);
            work(amount);
            clock_gettime(CLOCK_THREAD_CPUTIME_ID, &end);
            best = std::min(best,
                static_cast<double>(end.tv_sec - start.tv_sec)
                    + static_cast<double>(end.tv_nsec - start.tv_nsec) / 1e9);
        }
        return best;
    };
    const double once = seconds(size);
    return seconds(4 * size) / std::max(once, 1e-6);
}

inline std::string repeated(std::size_t times, std::string_view text)
{
    std::string result;
    result.reserve(times * text.size());
    for (; times > 0; --times)
        result += text;
    return result;
}

/// Above it, work is taken to grow faster than its input.
constexpr double kLinear = 8;

} // namespace mervo::test
