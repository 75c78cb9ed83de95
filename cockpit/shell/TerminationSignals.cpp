#include "cockpit/shell/TerminationSignals.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace mervo {

namespace {

constexpr std::array kSignals = {SIGTERM, SIGINT, SIGHUP};
std::array<int, 2> wire = {-1, -1};

void onSignal(int)
{
    const int keptError = errno;
    const char word = 1;
    [[maybe_unused]] const auto written = ::write(wire[1], &word, 1); // a full wire has said it already
    errno = keptError;
}

void setAction(void (*action)(int))
{
    struct sigaction what = {};
    what.sa_handler = action;
    what.sa_flags = SA_RESTART;
    for (const int signal : kSignals)
        ::sigaction(signal, &what, nullptr);
}

} // namespace

TerminationSignals::TerminationSignals()
{
    if (::pipe2(wire.data(), O_CLOEXEC | O_NONBLOCK) != 0)
        throw std::system_error(errno, std::generic_category(), "No pipe for signals");
    notifier_ = std::make_unique<QSocketNotifier>(wire[0], QSocketNotifier::Read);
    connect(notifier_.get(), &QSocketNotifier::activated, this, [this] {
        char word = 0;
        while (::read(wire[0], &word, 1) > 0) { }
        Q_EMIT received();
    });
    setAction(onSignal);
}

/// From here on a signal ends the process at once: what still runs may be waited for, and a person may be in a hurry.
TerminationSignals::~TerminationSignals()
{
    setAction(SIG_DFL);
    notifier_.reset();
    for (int& end : wire)
        ::close(std::exchange(end, -1));
}

} // namespace mervo
