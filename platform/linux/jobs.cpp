#include "platform/jobs.h"

#include "platform/process.h"
#include "platform/programs.h"
#include "platform/unified_log.h"

#include <exception>

namespace mervo::platform {

void resumeJobs() noexcept
{
    try {
        const Outcome outcome = run({.program = platformProgram("launchctl").string(), .arguments = {"resume"}});
        if (outcome.status != 0)
            logError("jobs", outcome.error);
    } catch (const std::exception& error) {
        logError("jobs", error.what());
    }
}

} // namespace mervo::platform
