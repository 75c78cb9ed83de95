#pragma once

#include "platform/descriptor.h"
#include "platform/jobs/Job.h"
#include "platform/jobs/Timetable.h"
#include "platform/launchd/FolderWatch.h"
#include "platform/launchd/WakeTimer.h"

#include <functional>
#include <map>
#include <string>
#include <string_view>

/// Starts the jobs that are loaded at their times.
///
/// Sleeps until the next time is due, the clock is set, a job is loaded, removed or asked for, or a run ends. There is
/// one for each user: whoever makes it holds the lock. All that it knows lies in files (JobPlaces.h, RunRecord.h), so
/// that another one goes on where it was killed; the runs in progress live on. A time that passed while there was none
/// is left out.
namespace mervo::jobs {

class Runner {
public:
    /// Receive a line each: what was started and how it ended, and what went wrong.
    struct Log {
        std::function<void(const std::string&)> info, error;
    };

    /// Loads the jobs that lie in the loaded folder. A system that gives no timer or watch is a std::system_error.
    explicit Runner(Log log);

    /// Returns true when no job is left or the folders are others now, and false when `ends` has become readable.
    bool run(int ends);

private:
    struct Loaded {
        Job job;
        WallTime since;
    };
    struct Run {
        pid_t process = 0;
        platform::Descriptor end; ///< readable when the process has ended
    };

    void loadAll();
    void load(const std::string& label);
    void unload(const std::string& label);
    void forget(const std::string& label);
    void schedule(const Loaded& loaded, const Moment& now);
    void takeRequests();
    void takeChanges();
    void start(const std::string& label);
    void follow(const std::string& label, pid_t process);
    void finish(const std::string& label);
    /// Blocks until there is something to do. False when `ends` has become readable.
    bool wait(int ends);

    Log log_;
    WakeTimer timer_;
    FolderWatch watch_;
    Timetable timetable_;
    std::map<std::string, Loaded, std::less<>> loaded_;
    std::map<std::string, Run, std::less<>> runs_;
};

} // namespace mervo::jobs
