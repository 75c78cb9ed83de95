#pragma once

#include "core/automations/launch/AgentRun.h"

#include <string>
#include <system_error>

/// The script under which a terminal runs a client: it gives it the prompt, logs begin and end, and makes a done file
/// when the client has ended without one.
namespace mervo::WrapperScript {

std::string text(const AgentRun& run);

/// Replaces the script of the run before and makes it executable. What is not written is not there either: the script
/// of an earlier run must not be taken for this one's.
std::error_code write(const AgentRun& run);

} // namespace mervo::WrapperScript
