#include "platform/programs.h"

#include <system_error>

namespace mervo::platform {

namespace {

constexpr std::string_view kBundleFolder = "Contents";

std::filesystem::path findBundle()
{
    std::error_code error;
    const std::filesystem::path executable = std::filesystem::read_symlink("/proc/self/exe", error);
    if (error)
        return {};
    const std::filesystem::path own = executable.parent_path();
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

std::filesystem::path resource(std::string_view name)
{
    return bundle() / "Resources" / "MervoCore_MervoCore.bundle" / name;
}

} // namespace mervo::platform
