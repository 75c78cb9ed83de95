#include "platform/launchctl/Target.h"

#include "platform/jobs/Job.h"
#include "platform/launchctl/Commands.h"

#include <filesystem>
#include <fmt/format.h>
#include <unistd.h>

namespace mervo::jobs {

namespace {

constexpr std::string_view kDomain = "gui/", kList = ".plist";

} // namespace

std::string target(const std::vector<std::string>& words)
{
    const std::string own = fmt::format("{}{}", kDomain, ::getuid());
    std::vector<std::string> rest = words;
    if (!rest.empty() && rest.front().starts_with(kDomain)) {
        const std::size_t slash = rest.front().find('/', kDomain.size());
        if (rest.front().substr(0, slash) != own)
            throw CommandError(
                Exit::usage, fmt::format("{} is not the domain of this user, {}.", rest.front().substr(0, slash), own));
        if (slash == std::string::npos) {
            rest.erase(rest.begin());
        } else {
            rest.front().erase(0, slash + 1);
        }
    }
    if (rest.size() != 1 || rest.front().empty())
        throw CommandError(Exit::usage, fmt::format("one job is to be named, such as \"{} org.example.job\".", own));
    return rest.front();
}

std::string labelOf(const std::string& target)
{
    const std::filesystem::path path(target);
    if (target.find('/') == std::string::npos && path.extension() != kList)
        return target;
    try {
        return readJob(path).job.label;
    } catch (const JobError&) {
        return path.stem(); // property lists are named after their jobs
    }
}

} // namespace mervo::jobs
