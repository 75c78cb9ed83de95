#pragma once

#include "platform/desk/health/HealthChecks.h"

namespace mervo::desk {

/// What happens where nothing is decided.
std::vector<Finding> examineConsentSettings(const Configuration& configuration);
/// The record: what is refused, and how to allow it.
std::vector<Finding> examineConsentData();

inline constexpr HealthChecks kConsentHealth{examineConsentSettings, examineConsentData};

} // namespace mervo::desk
