#include "platform/linux/Child.h"

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>

namespace mervo::platform {

Child::Child(pid_t id, bool leadsGroup)
    : id_(id)
    , leadsGroup_(leadsGroup)
    , end_(static_cast<int>(::syscall(SYS_pidfd_open, id, 0)))
{
}

Child::~Child()
{
    if (id_ > 0) {
        signal(SIGKILL);
        wait();
    }
}

void Child::signal(int number) const noexcept
{
    ::kill(leadsGroup_ ? -id_ : id_, number);
}

std::optional<int> Child::wait() noexcept
{
    const pid_t id = std::exchange(id_, -1);
    int status = 0;
    while (::waitpid(id, &status, 0) < 0) {
        if (errno != EINTR)
            return std::nullopt;
    }
    return status;
}

void setStatus(Outcome& outcome, int status)
{
    if (WIFEXITED(status)) {
        outcome.status = WEXITSTATUS(status);
    } else if (WIFSIGNALED(status)) {
        outcome.signal = WTERMSIG(status);
    }
}

Descriptor aboveStandard(Descriptor descriptor)
{
    if (descriptor.get() > STDERR_FILENO)
        return descriptor;
    const int moved = ::fcntl(descriptor.get(), F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    if (moved < 0)
        throw NotStarted(errno, NotStarted::Step::pipe);
    return Descriptor(moved);
}

} // namespace mervo::platform
