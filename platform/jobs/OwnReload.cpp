#include "platform/jobs/JobPlaces.h"
#include "platform/jobs/OwnJobs.h"
#include "platform/jobs/SystemdJobs.h"

#include <system_error>

// Apart from the rest, which does not read property lists.
namespace mervo::jobs::own {

void reload(const std::function<void(const std::string&)>& complain)
{
    std::error_code error;
    for (const std::string& label : loaded())
        std::filesystem::remove(loadedFolder() / label, error);
    for (const std::filesystem::path& file : propertyLists()) {
        try {
            const Job job = readJob(file).job;
            if (systemd::isLoaded(job.label))
                continue;
            link(job);
            if (job.runAtLoad)
                ask(job.label);
        } catch (const std::exception& problem) {
            complain("could not load " + file.string() + ": " + problem.what());
        }
    }
}

} // namespace mervo::jobs::own
