#include "platform/programs.h"

#include "platform/folders.h"

#include <cstdlib>
#include <sstream>
#include <system_error>
#include <unistd.h>

namespace mervo::platform {

namespace {

constexpr std::string_view kBundleFolder = "Contents";

std::filesystem::path findBundle()
{
    std::filesystem::path own = ownExecutable().parent_path();
    for (std::filesystem::path folder = own; folder.has_relative_path(); folder = folder.parent_path()) {
        if (folder.filename() == kBundleFolder)
            return folder;
    }
    return own;
}

} // namespace

const std::filesystem::path& bundle()
{
    static const std::filesystem::path found = findBundle();
    return found;
}

std::filesystem::path ownExecutable()
{
    std::error_code unreadable;
    return std::filesystem::read_symlink("/proc/self/exe", unreadable);
}

std::filesystem::path osascript()
{
    return platformProgram("osascript");
}

std::filesystem::path helper(std::string_view name)
{
    return bundle() / "Helpers" / name;
}

std::filesystem::path platformProgram(std::string_view name)
{
    return bundle() / "Helpers" / "platform" / name;
}

bool canRun(const std::filesystem::path& file)
{
    std::error_code error;
    return std::filesystem::is_regular_file(file, error) && access(file.c_str(), X_OK) == 0;
}

std::filesystem::path findProgram(std::string_view name)
{
    if (name.find('/') != std::string_view::npos) {
        std::filesystem::path file = expandTilde(name);
        return canRun(file) ? file : std::filesystem::path();
    }
    const char* path = std::getenv("PATH");
    std::istringstream folders(path == nullptr ? "/usr/local/bin:/usr/bin:/bin" : path);
    for (std::string folder; !name.empty() && std::getline(folders, folder, ':');) {
        std::filesystem::path file = std::filesystem::path(folder.empty() ? "." : folder) / name;
        if (canRun(file))
            return file;
    }
    return {};
}

std::filesystem::path resource(std::string_view name)
{
    return bundle() / "Resources" / "MervoCore_MervoCore.bundle" / name;
}

} // namespace mervo::platform
