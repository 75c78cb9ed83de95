#pragma once

#include "platform/applescript/values/Application.h"
#include "platform/desk/health/HealthChecks.h"
#include "platform/desk/settings/Configuration.h"

#include <span>

/// The desk put together: all of its applications, with the settings and the health checks of their data.
namespace mervo::desk {

struct DeskPart {
    /// Makes the application known to the script host. It reads desk.toml with these sections. Null: no application.
    void (*add)(applescript::ApplicationRegistry& registry, Sections sections) = nullptr;
    const HealthChecks* health = nullptr; ///< null: nothing to check
};

/// In the order in which findings are reported.
std::span<const DeskPart> deskParts();

/// All that desk.toml may hold, in the order in which it is checked (DeskSections.cpp).
Sections deskSections();

/// Makes all applications known to the script host, and the owner's consent its guard.
void registerDesk(applescript::ApplicationRegistry& registry);

} // namespace mervo::desk
