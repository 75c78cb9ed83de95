#pragma once

#include "platform/desk/health/HealthChecks.h"

namespace mervo::desk {

/// Each account's mailboxes, and how it sends.
std::vector<Finding> examineMailSettings(const Configuration& configuration);
/// The header index.
std::vector<Finding> examineMailData();

inline constexpr HealthChecks kMailHealth{examineMailSettings, examineMailData};

} // namespace mervo::desk
