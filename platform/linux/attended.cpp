#include "platform/attended.h"

#include "platform/linux/Child.h"
#include "platform/linux/Spawn.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <poll.h>
#include <thread>
#include <unistd.h>

namespace mervo::platform {

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

constexpr milliseconds kPause(10);
constexpr int kLookAgain = 1000; // milliseconds, on a system that cannot tell of an end

int streamOf(const Descriptor& descriptor)
{
    return descriptor.open() ? descriptor.get() : Start::kNull;
}

/// Whether the child has ended before the request, or the deadline, came.
bool hasEnded(const Child& child, int request, int patience)
{
    std::array<pollfd, 2> watched{{{child.end().get(), POLLIN, 0}, {request, POLLIN, 0}}};
    while (::poll(watched.data(), watched.size(), patience) < 0 && errno == EINTR) { }
    return watched[0].revents != 0;
}

/// Until the child has ended or a request has come, which it then gets; after the mercy it is killed. True when asked.
bool attend(const Child& child, EndRequest& request, milliseconds mercy)
{
    const int patience = child.end().open() ? -1 : kLookAgain;
    while (request.signal() == 0) {
        if (hasEnded(child, request.descriptor(), patience) || !child.end().open())
            return request.signal() != 0;
    }
    child.signal(SIGTERM);
    if (!hasEnded(child, -1, static_cast<int>(mercy.count())))
        child.signal(SIGKILL);
    return true;
}

/// What is left of a group whose leader has been waited for. Its number is nobody else's while it has members.
void endGroup(pid_t group, milliseconds mercy)
{
    const auto end = Clock::now() + mercy;
    while (::kill(-group, 0) == 0 && Clock::now() < end)
        std::this_thread::sleep_for(kPause);
    ::kill(-group, SIGKILL);
}

} // namespace

Outcome runAttended(const Command& command, const Streams& streams, EndRequest& request, milliseconds mercy,
    const std::function<void(std::int64_t)>& started)
{
    const Start start{.standard = {streamOf(streams.input), streamOf(streams.output), streamOf(streams.output)},
        .ownSession = true,
        .diesWithUs = true};
    const pid_t id = spawn(command, start);
    Child child(id, true);
    if (started)
        started(id);
    Outcome outcome;
    outcome.stopped = attend(child, request, mercy);
    child.signal(SIGTERM); // what it leaves behind; its number is its own until it is waited for
    if (const auto status = child.wait())
        setStatus(outcome, *status);
    endGroup(id, mercy);
    return outcome;
}

std::size_t longestArgument() noexcept
{
    constexpr std::size_t kPages = 32; // MAX_ARG_STRLEN of <linux/binfmts.h>, with the byte that ends it
    return kPages * static_cast<std::size_t>(::sysconf(_SC_PAGESIZE)) - 1;
}

} // namespace mervo::platform
