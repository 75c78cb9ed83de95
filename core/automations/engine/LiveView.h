#pragma once

#include "core/automations/engine/Programs.h"

#include <filesystem>
#include <string>
#include <string_view>

/// Opens the owner's terminal on the live session of an automation.
namespace mervo::LiveView {

/// A script for a terminal: shows the session and, when the session was left or has ended, closes the window of those
/// terminals that know how ("terminal", "iterm").
std::string script(const std::filesystem::path& socket, std::string_view automation, std::string_view terminal);

/// The name by which a terminal is known to `script`: the last part of its path without the extension, in lower case.
std::string shortName(const std::string& terminal);

/// Writes the script into the folder for temporary files and opens it with this application. Throws
/// EngineError::failed.
void open(const std::filesystem::path& socket, std::string_view automation, const std::string& terminal,
    const RunProgram& run);

} // namespace mervo::LiveView
