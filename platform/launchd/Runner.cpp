#include "platform/launchd/Runner.h"

#include "platform/jobs/JobPlaces.h"
#include "platform/jobs/RunRecord.h"
#include "platform/launchd/JobProcess.h"
#include "platform/process.h"

#include <cerrno>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <poll.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <system_error>
#include <unistd.h>
#include <utility>
#include <vector>

namespace mervo::jobs {

namespace {

namespace fs = std::filesystem;

std::vector<std::string> namesIn(const fs::path& folder)
{
    std::vector<std::string> names;
    std::error_code error;
    for (fs::directory_iterator entry(folder, error), end; !error && entry != end; entry.increment(error))
        names.push_back(entry->path().filename());
    return names;
}

/// When the link to a job's property list was made; nothing when it is gone.
std::optional<WallTime> loadedSince(const std::string& label)
{
    struct stat status { };
    if (::lstat((loadedFolder() / label).c_str(), &status) != 0)
        return std::nullopt;
    const timespec& made = status.st_mtim;
    return WallTime(std::chrono::seconds(made.tv_sec) + std::chrono::nanoseconds(made.tv_nsec));
}

std::string howItEnded(const siginfo_t& info)
{
    if (info.si_code == CLD_EXITED)
        return "ended with status " + std::to_string(info.si_status);
    return "was ended by signal " + std::to_string(info.si_status) + " (" + platform::signalName(info.si_status) + ')';
}

} // namespace

Runner::Runner(Log log)
    : log_(std::move(log))
{
    loadAll();
    takeRequests();
}

bool Runner::run(int ends)
{
    do {
        ::tzset(); // a package of time zones may have been installed
        takeChanges();
        if (!watch_.isCurrent())
            return true;
        for (const std::string& label : timetable_.takeDue(WakeTimer::now()))
            start(label);
        if (loaded_.empty() && runs_.empty())
            return true;
    } while (wait(ends));
    return false;
}

bool Runner::wait(int ends)
{
    if (!timer_.set(timetable_.next(WakeTimer::now())))
        return true;
    std::vector<pollfd> awaited{{ends, POLLIN, 0}, {timer_.descriptor(), POLLIN, 0}, {watch_.descriptor(), POLLIN, 0}};
    const std::size_t first = awaited.size();
    std::vector<std::string> labels;
    for (const auto& [label, run] : runs_) {
        awaited.push_back({run.end.get(), POLLIN, 0});
        labels.push_back(label);
    }
    if (::poll(awaited.data(), awaited.size(), -1) < 0)
        return errno == EINTR;
    for (std::size_t run = 0; run < labels.size(); ++run) {
        if (awaited[first + run].revents != 0)
            finish(labels[run]);
    }
    return awaited.front().revents == 0;
}

void Runner::loadAll()
{
    for (const std::string& label : namesIn(loadedFolder()))
        load(label);
    for (const std::string& label : namesIn(runsFolder()))
        forget(label);
}

void Runner::load(const std::string& label)
{
    const fs::path link = loadedFolder() / label;
    try {
        const auto since = loadedSince(label);
        if (!since)
            return;
        Loaded loaded{readJob(fs::read_symlink(link)).job, *since};
        if (loaded.job.label != label)
            throw JobError("its property list is now that of " + loaded.job.label);
        schedule(loaded, WakeTimer::now());
        loaded_.insert_or_assign(label, std::move(loaded));
        if (const auto process = RunRecord::open(runsFolder() / label).running(); process && !runs_.contains(label))
            follow(label, *process);
    } catch (const std::exception& error) {
        log_.error("could not load " + label + ": " + error.what());
        std::error_code ignored; // it is looked at again at the next start
        fs::remove(link, ignored);
    }
}

void Runner::unload(const std::string& label)
{
    timetable_.remove(label);
    loaded_.erase(label);
}

/// The last run of a job that is gone. While that run goes on, its record keeps it from being started twice.
void Runner::forget(const std::string& label)
{
    if (loadedSince(label) || runs_.contains(label))
        return;
    try {
        if (!RunRecord::open(runsFolder() / label).running())
            fs::remove(runsFolder() / label);
    } catch (const std::system_error& error) { // a record too many is harmless
        log_.error("could not remove the record of " + label + ": " + error.what());
    }
}

void Runner::schedule(const Loaded& loaded, const Moment& now)
{
    const Job& job = loaded.job;
    if (job.interval)
        timetable_.add(job.label, *job.interval, loaded.since, now);
    if (!job.calendar.empty())
        timetable_.add(job.label, calendarOf(job.calendar), now);
}

void Runner::takeChanges()
{
    for (const FolderWatch::Change& change : watch_.take()) {
        switch (change.place) {
        case FolderWatch::Place::loaded:
            unload(change.name);
            load(change.name);
            forget(change.name);
            break;
        case FolderWatch::Place::requests:
            takeRequests();
            break;
        case FolderWatch::Place::timeZone:
            timetable_.changeZone();
            break;
        case FolderWatch::Place::everything:
            while (!loaded_.empty())
                unload(std::string(loaded_.begin()->first));
            loadAll();
            takeRequests();
            break;
        }
    }
}

/// A request is removed before the job starts: a runner that is killed in between owes a run, and none is made twice.
/// The job may have come a moment ago, with its change still untold.
void Runner::takeRequests()
{
    for (const std::string& label : namesIn(requestsFolder())) {
        std::error_code error;
        if (!loaded_.contains(label))
            load(label);
        if (fs::remove(requestsFolder() / label, error) && !error)
            start(label);
    }
}

void Runner::start(const std::string& label)
{
    const auto found = loaded_.find(label);
    if (found == loaded_.end() || !loadedSince(label))
        return; // it was removed a moment ago
    try {
        const RunRecord record = RunRecord::open(runsFolder() / label);
        if (runs_.contains(label) || record.running()) {
            log_.info(label + " is due and still runs: this run is left out");
            return;
        }
        const pid_t process = jobs::start(found->second.job, record);
        log_.info("started " + label + " as process " + std::to_string(process));
        follow(label, process);
    } catch (const std::exception& error) {
        log_.error("could not start " + label + ": " + error.what());
    }
}

void Runner::follow(const std::string& label, pid_t process)
{
    platform::Descriptor end(static_cast<int>(::syscall(SYS_pidfd_open, process, 0)));
    if (!end.open())
        throw std::system_error(errno, std::generic_category(), "process " + std::to_string(process));
    runs_.insert_or_assign(label, Run{process, std::move(end)});
}

void Runner::finish(const std::string& label)
{
    const auto run = runs_.extract(label);
    siginfo_t info{};
    const bool isOurs =
        ::waitid(P_PID, static_cast<id_t>(run.mapped().process), &info, WEXITED | WNOHANG) == 0 && info.si_pid != 0;
    log_.info(
        label + ' ' + (isOurs ? howItEnded(info) : "ended; how is not known, since an earlier runner had started it"));
    if (!loaded_.contains(label))
        return forget(label);
    try {
        if (isOurs)
            RunRecord::open(runsFolder() / label).writeEnd(info.si_code, info.si_status);
    } catch (const std::system_error& error) {
        log_.error("could not note how " + label + " ended: " + error.what());
    }
}

} // namespace mervo::jobs
