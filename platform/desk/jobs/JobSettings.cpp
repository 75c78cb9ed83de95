#include "platform/desk/jobs/JobSettings.h"

namespace mervo::desk {
namespace {

JobRunner readRunner(const Table& jobs)
{
    jobs.refuseUnknownKeys({"runner"}, "of \"jobs\"");
    if (!jobs.contains("runner"))
        return JobRunner::automatic;
    const std::string runner = jobs.text("runner");
    if (runner == "systemd")
        return JobRunner::systemd;
    if (runner == "own")
        return JobRunner::own;
    if (runner == "none")
        return JobRunner::none;
    if (runner != "auto")
        jobs.fail("runner", "is none of \"auto\", \"systemd\", \"own\" and \"none\"");
    return JobRunner::automatic;
}

} // namespace

void checkJobSection(const Table& jobs)
{
    readRunner(jobs);
}

JobRunner jobRunner(const Configuration& configuration)
{
    const auto jobs = configuration.section(kJobSection);
    return jobs ? readRunner(*jobs) : JobRunner::automatic;
}

} // namespace mervo::desk
