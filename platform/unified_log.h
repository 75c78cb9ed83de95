#pragma once

#include <string_view>

/// The platform's log: one line for the person who looks after the machine. Entries carry the subsystem
/// "org.mervolabs.app" and a category, one for each area of the program. On Linux: the journal where it runs, else
/// syslog. Never throws, never blocks on a full log, never writes to the terminal.
namespace mervo::platform {

void logError(std::string_view category, std::string_view message) noexcept;

/// What happened as it should.
void logInfo(std::string_view category, std::string_view message) noexcept;

} // namespace mervo::platform
