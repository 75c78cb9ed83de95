#pragma once

#include "platform/desk/running/ApplicationSettings.h"
#include "platform/desk/running/DeskApplication.h"
#include "platform/desk/running/RunningError.h"

#include <map>
#include <string>
#include <sys/types.h>
#include <vector>

namespace mervo::desk {

/// Which applications run: one does while its presence is there (Presence.h), or while the owner's own program for it
/// runs. Finder and System Events always do. Nothing is kept between two questions.
class RunningApplications {
public:
    explicit RunningApplications(std::map<DeskApplication, std::string> named = {})
        : named_(std::move(named))
    {
    }
    /// The programs of desk.toml. A mistake in it throws ConfigurationError.
    explicit RunningApplications(const Configuration& configuration)
        : RunningApplications(namedPrograms(configuration))
    {
    }

    bool isRunning(DeskApplication application) const;
    /// Its presence, or a process of the owner's program; 0 when it does not run, or needs no process to.
    pid_t processOf(DeskApplication application) const;
    /// Makes it run: with a presence of its own, which outlives this process. Does nothing where it runs. Returns when
    /// it is there. Throws RunningError.
    void start(DeskApplication application) const;
    /// Asks it to quit, never by force. The presence has ended when this returns; the owner's program has been asked
    /// and may ask the owner in turn. Nothing to do where it does not run. Throws RunningError when it cannot be asked.
    void terminate(DeskApplication application) const;

    /// The owner's own program for it: what desk.toml names, else the desktop's for that kind. Empty: none.
    std::string ownProgram(DeskApplication application) const;

private:
    std::vector<pid_t> ownProcesses(DeskApplication application) const;

    std::map<DeskApplication, std::string> named_;
};

} // namespace mervo::desk
