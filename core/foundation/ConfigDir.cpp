#include "core/foundation/ConfigDir.h"

#include "platform/files.h"
#include "platform/folders.h"
#include "platform/unified_log.h"

#include <cstdlib>
#include <string>

namespace mervo {

namespace {

/// A folder by one name, however it was written: absolute, no slash at the end.
std::filesystem::path plain(const std::filesystem::path& path)
{
    const std::filesystem::path whole = std::filesystem::absolute(path);
    return whole.has_filename() || !whole.has_relative_path() ? whole : whole.parent_path();
}

} // namespace

std::filesystem::path ConfigDir::url()
{
    const char* chosen = std::getenv("MERVO_HOME");
    if (chosen != nullptr && *chosen != '\0')
        return plain(platform::expandTilde(chosen));
    return platform::userHome() / "mervo";
}

std::filesystem::path ConfigDir::legacySupportURL()
{
    return platform::applicationSupport() / "mervo";
}

std::filesystem::path ConfigDir::databaseURL()
{
    return url() / "mervo.sqlite";
}

void ConfigDir::ensureExists()
{
    const std::filesystem::path home = url();
    if (const std::error_code error = platform::createPrivateFolder(home))
        throw std::filesystem::filesystem_error("The home directory cannot be created", home, error);
    DataProtection::secure(home);
}

void DataProtection::secure(const std::filesystem::path& path)
{
    using std::filesystem::perms;
    std::error_code error;
    if (std::filesystem::status(path, error).permissions() == perms::owner_all)
        return;
    std::filesystem::permissions(path, perms::owner_all, error);
    if (error)
        platform::logError("DataProtection", "chmod 0700 failed for " + path.string() + ": " + error.message());
}

bool DataProtection::isSandboxed()
{
    return std::getenv("APP_SANDBOX_CONTAINER_ID") != nullptr;
}

} // namespace mervo
