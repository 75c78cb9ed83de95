#pragma once

#include "platform/desk/health/HealthChecks.h"

namespace mervo::desk {

/// Where the notes are, how many there are, which of them cannot be read, and where new ones go.
std::vector<Finding> examineNotes(const Configuration& configuration);

inline constexpr HealthChecks kNotesHealth{examineNotes, nullptr};

} // namespace mervo::desk
