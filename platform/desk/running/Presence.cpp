#include "platform/desk/running/Presence.h"

#include "platform/desk/running/RunningError.h"
#include "platform/desk/settings/CommandWords.h"
#include "platform/desk/settings/Places.h"
#include "platform/files.h"
#include "platform/process.h"
#include "platform/programs.h"

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <fmt/format.h>
#include <poll.h>
#include <sys/syscall.h>
#include <system_error>
#include <unistd.h>

namespace mervo::desk {
namespace {

using platform::Descriptor;

constexpr int kPatience = 2000; // milliseconds for a process that has nothing to finish

std::filesystem::path fileOf(DeskApplication application)
{
    return dataFolder() / "running" / identityOf(application).name;
}

struct flock wholeFile()
{
    struct flock lock = {};
    lock.l_type = F_WRLCK;
    lock.l_whence = SEEK_SET;
    return lock;
}

/// Whether the process ends within the patience. One that cannot be watched has ended.
bool ends(const Descriptor& process)
{
    pollfd watched{process.get(), POLLIN, 0};
    int count = 0;
    while ((count = poll(&watched, 1, kPatience)) < 0 && errno == EINTR) { }
    return count > 0;
}

} // namespace

std::optional<PresenceLock> PresenceLock::take(DeskApplication application)
{
    const std::filesystem::path path = fileOf(application);
    if (const auto error = platform::createPrivateFolder(path.parent_path()))
        throw std::system_error(error);
    Descriptor file(::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY, 0600));
    struct flock lock = wholeFile();
    if (file.open() && ::fcntl(file.get(), F_SETLK, &lock) == 0)
        return PresenceLock(std::move(file));
    if (file.open() && (errno == EACCES || errno == EAGAIN))
        return std::nullopt;
    throw std::system_error(errno, std::generic_category());
}

std::optional<pid_t> presenceOf(DeskApplication application) noexcept
{
    try {
        const Descriptor file(
            ::open(fileOf(application).c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY));
        struct flock lock = wholeFile();
        if (!file.open() || ::fcntl(file.get(), F_GETLK, &lock) != 0 || lock.l_type == F_UNLCK)
            return std::nullopt;
        return lock.l_pid;
    } catch (const std::exception&) {
        return std::nullopt;
    }
}

void startPresence(DeskApplication application)
{
    const std::string name(identityOf(application).name);
    try {
        // Its parent ends when it is there, and the streams with it.
        const platform::Outcome outcome =
            platform::run({.program = platform::platformProgram("desk-application"), .arguments = {name}});
        if (outcome.status != 0)
            throw RunningError(fmt::format("{} cannot be started: {}", name, howItEnded("desk-application", outcome)));
    } catch (const platform::NotStarted& error) {
        throw RunningError(fmt::format("{} cannot be started: {}.", name, error.what()));
    }
}

void endPresence(DeskApplication application)
{
    const auto found = presenceOf(application);
    if (!found)
        return;
    if (*found <= 0) // a process that this one cannot see, in a container
        throw RunningError(fmt::format("{} cannot be asked to quit from here.", identityOf(application).name));
    // The number may belong to another process by now; the handle stays with one, so the second look decides.
    const Descriptor process(static_cast<int>(::syscall(SYS_pidfd_open, *found, 0)));
    if (!process.open() || presenceOf(application) != found)
        return;
    if (::syscall(SYS_pidfd_send_signal, process.get(), SIGTERM, nullptr, 0) == 0 && !ends(process))
        throw RunningError(fmt::format("{} does not end.", identityOf(application).name));
}

} // namespace mervo::desk
