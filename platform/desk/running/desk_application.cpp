#include "platform/desk/running/Presence.h"

#include <array>
#include <cstdio>
#include <exception>
#include <fcntl.h>
#include <optional>
#include <unistd.h>

using namespace mervo::desk;

namespace {

enum Exit { done = 0, failed = 1, usage = 2 };

/// Nothing of the caller's: its session, folder and streams.
void standAlone()
{
    ::setsid();
    (void)!::chdir("/");
    const int null = ::open("/dev/null", O_RDWR | O_CLOEXEC);
    for (int stream = 0; stream < 3; ++stream)
        ::dup2(null, stream);
}

/// Holds the lock, says so with one byte, and waits for a signal to end it.
[[noreturn]] void be(DeskApplication application, int ready)
{
    try {
        const std::optional<PresenceLock> lock = PresenceLock::take(application);
        standAlone();
        (void)!::write(ready, "1", 1);
        ::close(ready);
        while (lock) // else another process is the presence already
            ::pause();
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
        ::_exit(failed);
    }
    ::_exit(done);
}

} // namespace

/// desk-application NAME: makes an application of the desk run. Ends with 0 as soon as it does; a process of its own
/// stays until SIGTERM.
int main(int argc, char** argv)
{
    const auto application = argc == 2 ? applicationNamed(argv[1]) : std::nullopt;
    if (!application) {
        std::fputs("usage: desk-application NAME\n", stderr);
        return usage;
    }
    if (alwaysRuns(*application))
        return done;
    std::array<int, 2> ends{};
    if (::pipe2(ends.data(), O_CLOEXEC) != 0)
        return std::perror("desk-application"), failed;
    const pid_t child = ::fork();
    if (child < 0)
        return std::perror("desk-application"), failed;
    if (child == 0)
        be(*application, ends[1]);
    ::close(ends[1]);
    char byte = 0;
    return ::read(ends[0], &byte, 1) == 1 ? done : failed;
}
