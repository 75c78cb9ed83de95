#pragma once

#include "platform/process.h"

#include <string>

/// Messages about commands that the owner has configured.
namespace mervo::desk {

/// "msmtp ended with status 75: cannot connect to mail.example": how the command ended, and its own last lines, bounded
/// without control characters and without a full stop.
std::string howItEnded(const std::string& program, const platform::Outcome& outcome);

} // namespace mervo::desk
