#include "platform/desk/settings/Places.h"

#include "platform/folders.h"

#include <cstdlib>

namespace mervo::desk {

std::filesystem::path dataFolder()
{
    return platform::applicationSupport() / "mervo-desk";
}

std::filesystem::path configurationFile()
{
    return platform::configurationFolder() / "mervo-desk" / "desk.toml";
}

std::filesystem::path cacheFolder()
{
    const char* folder = std::getenv("XDG_CACHE_HOME");
    const bool isSet = folder != nullptr && folder[0] == '/';
    return (isSet ? std::filesystem::path(folder) : platform::userHome() / ".cache") / "mervo-desk";
}

} // namespace mervo::desk
