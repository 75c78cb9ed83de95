#pragma once

#include "core/foundation/ServiceError.h"
#include "platform/eventkit.h"

#include <functional>
#include <memory>
#include <string>

/// The owner's events and reminders, behind the check that they may be had.
namespace mervo::EventKitAccess {

/// Why they may not be had. A label is "Calendars" or "Reminders".
class AccessError final : public ServiceError {
public:
    static AccessError denied(const std::string& label);
    static AccessError restricted(const std::string& label);
    static AccessError requestFailed(const std::string& text);

private:
    using ServiceError::ServiceError;
};

/// Opens the store; platform::openEventStore for the owner's.
using OpenStore = std::function<std::unique_ptr<platform::EventStore>()>;

/// A store with full access to the entity. Asks the owner where nothing was decided, and waits for the answer. Throws
/// AccessError, and what `open` throws.
std::unique_ptr<platform::EventStore> store(const OpenStore& open, platform::Entity entity);

} // namespace mervo::EventKitAccess
