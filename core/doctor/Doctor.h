#pragma once

#include "platform/health.h"

#include <string_view>
#include <vector>

/// What works on this machine and what does not, in words for the owner, each with its remedy.
///
/// Reads only: nothing is created, migrated or repaired. Never throws: what cannot be looked at is a finding. Takes as
/// long as the script host and the local applications need to answer.
namespace mervo::Doctor {

using platform::Finding;
using State = Finding::State;

/// "works", "limited" or "broken".
std::string_view rawValue(State state);

/// The core's own checks in order of dependency, then those of the platform.
std::vector<Finding> examine();

} // namespace mervo::Doctor
