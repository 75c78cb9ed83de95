#include "platform/launchd/WakeTimer.h"

#include <cerrno>
#include <ctime>
#include <limits>
#include <sys/timerfd.h>
#include <system_error>

namespace mervo::jobs {

namespace {

constexpr std::int64_t kNanoseconds = 1'000'000'000;
constexpr std::time_t kNever = std::numeric_limits<std::int32_t>::max() * std::int64_t{64}; // the year 6325

std::chrono::nanoseconds read(clockid_t clock)
{
    timespec time{};
    ::clock_gettime(clock, &time);
    return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
}

} // namespace

WakeTimer::WakeTimer()
    : descriptor_(::timerfd_create(CLOCK_REALTIME, TFD_CLOEXEC | TFD_NONBLOCK))
{
    if (!descriptor_.open())
        throw std::system_error(errno, std::generic_category(), "timer");
}

Moment WakeTimer::now()
{
    return {WallTime(read(CLOCK_REALTIME)), read(CLOCK_BOOTTIME)};
}

bool WakeTimer::set(std::optional<WallTime> time)
{
    itimerspec when{};
    when.it_value.tv_sec = kNever;
    if (time) {
        // A time of nothing would switch the timer off.
        const std::int64_t nanoseconds = std::max<std::int64_t>(time->time_since_epoch().count(), 1);
        when.it_value = {nanoseconds / kNanoseconds, nanoseconds % kNanoseconds};
    }
    constexpr int kFlags = TFD_TIMER_ABSTIME | TFD_TIMER_CANCEL_ON_SET;
    if (::timerfd_settime(descriptor_.get(), kFlags, &when, nullptr) == 0)
        return true;
    if (errno != ECANCELED)
        throw std::system_error(errno, std::generic_category(), "timer");
    return false;
}

} // namespace mervo::jobs
