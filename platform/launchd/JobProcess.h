#pragma once

#include "platform/jobs/Job.h"
#include "platform/jobs/RunRecord.h"

#include <stdexcept>
#include <sys/types.h>

namespace mervo::jobs {

/// what() is what failed and why: "its folder /home/alex/work: No such file or directory".
class NotStarted final : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Starts a job's program as the leader of a session and process group of its own: in its folder, else the user's home,
/// with this process's environment and its own variables, nothing to read, and its output appended to its files (the
/// null device where it names none). It lives on when this process ends. Throws NotStarted.
pid_t start(const Job& job, const RunRecord& record);

} // namespace mervo::jobs
