#include "platform/jobs/JobPlaces.h"

#include "platform/folders.h"

#include <algorithm>
#include <system_error>

namespace mervo::jobs {

namespace {

std::filesystem::path state()
{
    return agentsFolder() / ".launchd";
}

} // namespace

std::filesystem::path agentsFolder()
{
    return platform::userHome() / "Library" / "LaunchAgents";
}

std::vector<std::filesystem::path> propertyLists()
{
    std::vector<std::filesystem::path> files;
    std::error_code error;
    std::filesystem::directory_iterator entry(agentsFolder(), error);
    for (const std::filesystem::directory_iterator end; !error && entry != end; entry.increment(error)) {
        if (entry->path().extension() == ".plist")
            files.push_back(entry->path());
    }
    std::ranges::sort(files);
    return files;
}

std::filesystem::path lockFile()
{
    return state() / "lock";
}

std::filesystem::path loadedFolder()
{
    return state() / "loaded";
}

std::filesystem::path requestsFolder()
{
    return state() / "requests";
}

std::filesystem::path runsFolder()
{
    return state() / "runs";
}

} // namespace mervo::jobs
