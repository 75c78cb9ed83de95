#include "frontends/cli/HeldSignals.h"

#include "platform/stop.h"

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <ctime>
#include <string_view>
#include <unistd.h>

namespace mervo::cli {

namespace {

constexpr std::array kSignals{SIGINT, SIGTERM, SIGHUP};
constexpr unsigned kOutputSeconds = 3;
constexpr std::string_view kHint =
    "\nmervo: waits for the tool, so that what it does is on record; Ctrl-C again ends it\n";

/// What passes a signal on (timeout, a shell) may send it to the process and to its group: that is one request.
constexpr std::int64_t kSameRequest = 50'000'000; // ns

std::atomic<int> held = 0;
std::atomic<std::int64_t> heldAt = 0;
std::array<struct sigaction, kSignals.size()> before{};

std::int64_t now() noexcept
{
    timespec time{};
    ::clock_gettime(CLOCK_MONOTONIC, &time);
    return std::int64_t{time.tv_sec} * 1'000'000'000 + time.tv_nsec;
}

void onSignal(int signal)
{
    const int kept = errno;
    int none = 0;
    if (held.compare_exchange_strong(none, signal)) {
        heldAt = now();
        if (signal == SIGINT && ::isatty(STDERR_FILENO) == 1) [[maybe_unused]]
            const auto written = ::write(STDERR_FILENO, kHint.data(), kHint.size());
    } else if (signal != SIGHUP && now() - heldAt > kSameRequest) { // a terminal that closes sends two SIGHUP
        platform::Stop::request(
            signal == SIGINT ? "ended by the person at the terminal" : "ended by a second signal to end");
    }
    errno = kept;
}

void endByHeldSignal(int = 0)
{
    struct sigaction usual = {};
    usual.sa_handler = SIG_DFL;
    ::sigaction(held, &usual, nullptr);
    ::raise(held);
}

} // namespace

HeldSignals::HeldSignals()
{
    held = 0;
    struct sigaction action = {};
    action.sa_handler = onSignal;
    action.sa_flags = SA_RESTART;
    for (std::size_t i = 0; i < kSignals.size(); ++i) {
        ::sigaction(kSignals[i], nullptr, &before[i]);
        if (before[i].sa_handler != SIG_IGN)
            ::sigaction(kSignals[i], &action, nullptr);
    }
}

HeldSignals::~HeldSignals()
{
    letGo();
    if (held != 0)
        endByHeldSignal();
}

void HeldSignals::letGo() noexcept
{
    for (std::size_t i = 0; i < kSignals.size(); ++i)
        ::sigaction(kSignals[i], &before[i], nullptr);
    if (held == 0)
        return;
    struct sigaction late = {};
    late.sa_handler = endByHeldSignal;
    ::sigaction(SIGALRM, &late, nullptr);
    ::alarm(kOutputSeconds);
}

} // namespace mervo::cli
