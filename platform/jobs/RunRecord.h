#pragma once

#include "platform/descriptor.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <sys/types.h>

/// What is known of a job's last run, in a file of one line, filled with blanks to one length so that a full disk takes
/// it:
///
///     running <process> <start> <boot>   process number, its start in the kernel's ticks, and the boot's id
///     exited <status>
///     signal <number>
///
/// The process itself writes the first form before it becomes the job's program, so that a job never runs without a
/// record, whatever becomes of the runner. From the opening until then the record is locked (flock), by the runner and
/// by the new process with it: another runner that opens it waits for that moment.
namespace mervo::jobs {

struct LastRun {
    enum class State { running, exited, signalled } state = State::exited;
    int number = 0; ///< the process, the exit status or the signal
};

class RunRecord {
public:
    /// Creates the file where there is none. Waits for a run that is about to begin. Throws std::system_error.
    static RunRecord open(const std::filesystem::path& file);

    /// The process that runs; nothing when none does.
    std::optional<pid_t> running() const;
    /// Called by the new process. What a full disk does not take is left out: only another runner would miss it.
    void writeRunning() const noexcept;
    /// How the run ended, as waitid tells it.
    void writeEnd(int code, int status) const noexcept;

private:
    explicit RunRecord(platform::Descriptor descriptor)
        : descriptor_(std::move(descriptor))
    {
    }
    platform::Descriptor descriptor_;
};

/// Without waiting. Nothing when there was no run, or when it is not known how it ended.
std::optional<LastRun> lastRun(const std::filesystem::path& file);

} // namespace mervo::jobs
