#include "platform/desk/settings/Places.h"

#include "platform/folders.h"

#include <cstdlib>

namespace mervo::desk {
namespace {

std::filesystem::path base(const char* variable, const char* belowHome)
{
    const char* value = std::getenv(variable);
    return value != nullptr && value[0] == '/' ? std::filesystem::path(value) : platform::userHome() / belowHome;
}

} // namespace

std::filesystem::path dataFolder()
{
    return base("XDG_DATA_HOME", ".local/share") / "mervo-desk";
}

std::filesystem::path configurationFile()
{
    return base("XDG_CONFIG_HOME", ".config") / "mervo-desk" / "desk.toml";
}

std::filesystem::path cacheFolder()
{
    return base("XDG_CACHE_HOME", ".cache") / "mervo-desk";
}

} // namespace mervo::desk
