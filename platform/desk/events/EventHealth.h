#pragma once

#include "platform/desk/health/HealthChecks.h"

namespace mervo::desk {

/// The folders of calendars and reminders: there, readable, writable; the items in them that are damaged, by name; the
/// default collections.
std::vector<Finding> examineEvents(const Configuration& configuration);
std::vector<Finding> examineReminders(const Configuration& configuration);

inline constexpr HealthChecks kEventHealth{examineEvents, nullptr};
inline constexpr HealthChecks kReminderHealth{examineReminders, nullptr};

} // namespace mervo::desk
