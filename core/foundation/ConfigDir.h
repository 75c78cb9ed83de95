#pragma once

#include <filesystem>

/// The home directory, where all processes of the system meet and which they share with nobody: mode 0700.
namespace mervo::ConfigDir {

/// `$MERVO_HOME` with a leading tilde expanded, if set and not empty; else "mervo" in the user's home directory.
/// Computed on every use; creates nothing.
std::filesystem::path url();

/// "mervo" in the user's folder for application data: where the older layout lies.
std::filesystem::path legacySupportURL();

/// `<home>/mervo.sqlite`.
std::filesystem::path databaseURL();

/// Creates the home directory and what is above it, and sets its mode to 0700. Idempotent, also for two processes at
/// once. Throws std::filesystem::filesystem_error when it cannot be created.
void ensureExists();

} // namespace mervo::ConfigDir

namespace mervo::DataProtection {

/// Sets mode 0700. A failure is logged (category "DataProtection") and otherwise passed over.
void secure(const std::filesystem::path& path);

/// True inside an application sandbox.
bool isSandboxed();

} // namespace mervo::DataProtection
