#pragma once

#include <filesystem>
#include <string_view>

/// Where the programs and fixed files of the system are: the one place that names them.
///
/// The bundle is the folder "Contents" above the running executable's own real path, so a build tree works without
/// installation and a link in a bin folder leads to the right place. Paths are computed, not checked: starting a
/// program that is not there is the caller's error to report.
namespace mervo::platform {

/// The bundle's folder "Contents". Without one above the executable: the executable's own folder.
const std::filesystem::path& bundle();

/// The file of the running program.
std::filesystem::path ownExecutable();

/// The script host: runs a script file with positional arguments.
std::filesystem::path osascript();

/// One of our own command-line programs, by name ("mervo", "mervo-mcp").
std::filesystem::path helper(std::string_view name);

/// One of the programs that stand in for the system's own ("osascript", "desk-health").
std::filesystem::path platformProgram(std::string_view name);

/// Whether this is a regular file that this process may execute.
bool canRun(const std::filesystem::path& file);

/// A program of the owner's, by the name or path that a configuration gives it: looked for along PATH as a shell does,
/// with a leading tilde expanded. Empty when there is none that can be run.
std::filesystem::path findProgram(std::string_view name);

/// A file of the core library's resources ("llm-guide.md").
std::filesystem::path resource(std::string_view name);

} // namespace mervo::platform
