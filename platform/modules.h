#pragma once

#include <string>

/// Parts of the bundle that are loaded when they are first needed, because loading the libraries behind them costs
/// more than most calls.
namespace mervo::platform {

/// The function `entry` of a module in the bundle's folder Helpers/platform; the module stays for the life of the
/// process. Throws std::runtime_error with the system's words.
void* moduleEntry(const std::string& module, const char* entry);

} // namespace mervo::platform
