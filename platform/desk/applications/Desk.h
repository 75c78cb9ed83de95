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
    const Section* section = nullptr; ///< null: nothing to configure
    const HealthChecks* health = nullptr; ///< null: nothing to check
};

/// In the order in which desk.toml is checked and findings are reported.
std::span<const DeskPart> deskParts();

/// The sections of all parts.
Sections deskSections();

/// Makes all applications known to the script host, and the owner's consent its guard.
void registerDesk(applescript::ApplicationRegistry& registry);

} // namespace mervo::desk
