#pragma once

#include <string>
#include <string_view>

namespace mervo::platform {

/// A word of the Exec line of a desktop entry: quoted, then escaped once more as every string value of the file is
/// (Desktop Entry Specification, "The Exec key").
std::string desktopExecWord(std::string_view word);

} // namespace mervo::platform
