#pragma once

#include <string>

namespace mervo::applescript {

/// The words for an error number that came without any: "User canceled." for -128.
std::string standardMessage(int number);

} // namespace mervo::applescript
