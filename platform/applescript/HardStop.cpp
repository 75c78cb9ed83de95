#include "platform/applescript/HardStop.h"

#include <string_view>
#include <unistd.h>

namespace mervo::applescript {

namespace {

constexpr std::string_view kSaid =
    "execution error: The script was ended: one step took too much processor time. (-1712)\n";

extern "C" void endProcess(int)
{
    [[maybe_unused]] const auto written = ::write(STDERR_FILENO, kSaid.data(), kSaid.size());
    ::_exit(1);
}

} // namespace

HardStop::HardStop(std::chrono::milliseconds processorTime) noexcept
{
    struct sigaction action { };
    action.sa_handler = endProcess;
    ::sigaction(SIGXCPU, &action, &before_);
    sigevent event{};
    event.sigev_notify = SIGEV_SIGNAL;
    event.sigev_signo = SIGXCPU;
    hasTimer_ = ::timer_create(CLOCK_THREAD_CPUTIME_ID, &event, &timer_) == 0;
    if (!hasTimer_)
        return;
    const auto seconds = std::chrono::floor<std::chrono::seconds>(processorTime);
    itimerspec when{};
    when.it_value.tv_sec = seconds.count();
    when.it_value.tv_nsec = std::chrono::nanoseconds(processorTime - seconds).count();
    ::timer_settime(timer_, 0, &when, nullptr);
}

HardStop::~HardStop()
{
    if (hasTimer_)
        ::timer_delete(timer_);
    ::sigaction(SIGXCPU, &before_, nullptr);
}

} // namespace mervo::applescript
