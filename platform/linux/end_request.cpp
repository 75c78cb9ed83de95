#include "platform/end_request.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <poll.h>
#include <sys/signalfd.h>
#include <unistd.h>

namespace mervo::platform {

namespace {

constexpr std::array kSignals{SIGTERM, SIGINT, SIGHUP};

/// A blocked signal would be kept even where it is ignored.
sigset_t held()
{
    sigset_t set;
    sigemptyset(&set);
    for (const int signal : kSignals) {
        struct sigaction action = {};
        if (::sigaction(signal, nullptr, &action) == 0 && action.sa_handler != SIG_IGN)
            sigaddset(&set, signal);
    }
    return set;
}

} // namespace

EndRequest::EndRequest()
    : beforeLimit_(::signal(SIGXFSZ, SIG_IGN))
{
    const sigset_t set = held();
    arrived_ = Descriptor(::signalfd(-1, &set, SFD_CLOEXEC | SFD_NONBLOCK));
    if (arrived_.open())
        ::pthread_sigmask(SIG_BLOCK, &set, nullptr);
}

EndRequest::~EndRequest()
{
    const sigset_t set = held();
    ::signal(SIGXFSZ, beforeLimit_);
    ::pthread_sigmask(SIG_UNBLOCK, &set, nullptr);
}

int EndRequest::wait(std::chrono::milliseconds patience) noexcept
{
    if (signal_ != 0)
        return signal_;
    pollfd watched{arrived_.get(), POLLIN, 0};
    const int count = ::poll(&watched, 1, static_cast<int>(patience.count()));
    signalfd_siginfo arrived{};
    if (count > 0 && ::read(arrived_.get(), &arrived, sizeof arrived) == static_cast<ssize_t>(sizeof arrived))
        signal_ = static_cast<int>(arrived.ssi_signo);
    return signal_;
}

} // namespace mervo::platform
