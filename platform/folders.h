#pragma once

#include <filesystem>
#include <string_view>

/// The current user's folders. Computed on every use; nothing is created.
namespace mervo::platform {

/// `$HOME` when set and not empty, else what the user database says.
std::filesystem::path userHome();

/// Where applications keep their data: `$XDG_DATA_HOME`, else ".local/share" in the user's home.
std::filesystem::path applicationSupport();

/// Where programs look for what the user has configured: `$XDG_CONFIG_HOME`, else ".config" in the user's home.
std::filesystem::path configurationFolder();

/// A path with a leading "~" or "~name" replaced by that user's home. The text as it stands when there is no such user.
std::filesystem::path expandTilde(std::string_view path);

} // namespace mervo::platform
