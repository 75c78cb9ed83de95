#pragma once

#include "platform/process.h"

#include <functional>

namespace mervo {

/// Runs a program to its end (platform::run); a test may answer in its place.
using RunProgram = std::function<platform::Outcome(const platform::Command&)>;

} // namespace mervo
