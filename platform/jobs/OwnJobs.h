#pragma once

#include "platform/jobs/Job.h"

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

/// The jobs that the own runner looks after, as launchctl sees them: it leaves files for the runner (JobPlaces.h),
/// which watches their folders, and starts the runner where none lives.
namespace mervo::jobs::own {

/// Sorted.
std::vector<std::string> loaded();
bool isLoaded(const std::string& label);
/// The property list of a loaded job.
std::filesystem::path propertyList(const std::string& label);

/// Loads a job, starts the runner, and lets it be started at log-in. Throws std::runtime_error; the job is not loaded
/// then.
void load(const Job& job);
/// False when it is not loaded. A run in progress goes on.
bool unload(const std::string& label);
/// A run now, unless one is in progress.
void requestRun(const std::string& label);

/// The folders that launchctl and the runner share. Throws std::runtime_error.
void makeFolders();
/// The two steps of loading a job, for a runner that need not be started. Throw std::runtime_error.
void link(const Job& job);
void ask(const std::string& label);
/// What a log-in loads: every property list of the agents' folder and nothing else, except what systemd looks after;
/// asks for a run of those that want one. `complain` receives a line for each that cannot be read.
void reload(const std::function<void(const std::string&)>& complain);

/// Starts the runner where none lives; when it returns, one looks after the jobs. Throws std::runtime_error.
void startRunner();

/// The runner that lives.
struct Runner {
    std::int64_t process = 0; ///< 0: none does
    bool isOutdated = false; ///< its program has been replaced by another since it was started
};
Runner runner();

} // namespace mervo::jobs::own
