#pragma once

#include <filesystem>

/// Where the desk keeps its files, by the XDG base directory rules: a variable that is empty or holds a relative path
/// counts as unset. Paths are computed, nothing is created.
namespace mervo::desk {

/// $XDG_DATA_HOME/mervo-desk: the desk's own data.
std::filesystem::path dataFolder();

/// $XDG_CONFIG_HOME/mervo-desk/desk.toml.
std::filesystem::path configurationFile();

/// $XDG_CACHE_HOME/mervo-desk: may be deleted at any time.
std::filesystem::path cacheFolder();

} // namespace mervo::desk
