#pragma once

#include "platform/descriptor.h"
#include "platform/desk/running/DeskApplication.h"

#include <filesystem>
#include <optional>
#include <sys/types.h>

/// The presence of an application: a small process, `platform/desk-application NAME`, that does nothing but be there.
///
/// Its running state is a lock (fcntl, F_WRLCK) on the empty file `running/NAME` below the desk's data folder. The
/// system knows the holder and lets go of the lock when it ends, in whatever way: nothing is ever stale. The file
/// stays.
namespace mervo::desk {

/// The lock of this process on an application's file; while the object lives, the application runs. Not for a process
/// that forks afterwards: locks are not inherited.
class PresenceLock {
public:
    /// Nothing when another process holds it. Throws std::system_error when the file cannot be made or locked.
    static std::optional<PresenceLock> take(DeskApplication application);

private:
    explicit PresenceLock(platform::Descriptor file)
        : file_(std::move(file))
    {
    }
    platform::Descriptor file_;
};

/// The process that is the application's presence; nothing when there is none. Takes no lock itself.
std::optional<pid_t> presenceOf(DeskApplication application) noexcept;

/// Starts the presence where there is none and returns when it is there. It outlives this process. Throws RunningError.
void startPresence(DeskApplication application);

/// Asks the presence to end (SIGTERM) and waits for it up to 2 s. Nothing to do where there is none. Throws
/// RunningError when it goes on.
void endPresence(DeskApplication application);

} // namespace mervo::desk
