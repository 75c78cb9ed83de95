#pragma once

#include "platform/process.h"

#include <string>

/// How the desk speaks of a command that the owner has configured.
namespace mervo::desk {

/// "msmtp ended with status 75: cannot connect to mail.example": the command's own last lines, bounded and made
/// harmless.
std::string howItEnded(const std::string& program, const platform::Outcome& outcome);

} // namespace mervo::desk
