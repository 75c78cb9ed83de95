#pragma once

#include "platform/automation.h"
#include "platform/eventkit.h"

#include <chrono>
#include <functional>
#include <optional>
#include <string>

namespace mervo {

/// What the permission bootstrap asks of the system.
struct PermissionSystem {
    using Clock = std::chrono::steady_clock;

    std::function<platform::automation::Status(const std::string& bundleId, platform::automation::AskUser ask)>
        permission;
    std::function<void(const std::string& bundleId)> launch;
    std::function<void(const std::string& bundleId)> terminate;
    /// Nothing when the store cannot say.
    std::function<std::optional<platform::Authorization>(platform::Entity entity)> authorization;
    /// Settles it with the owner; a failure is passed over.
    std::function<void(platform::Entity entity)> requestFullAccess;
    std::function<Clock::time_point()> now;
    std::function<void(std::chrono::milliseconds duration)> sleep;

    /// The real one, with one event store that is opened when it is first asked.
    static PermissionSystem real();
};

} // namespace mervo
