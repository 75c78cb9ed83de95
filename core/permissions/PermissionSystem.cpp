#include "core/permissions/PermissionSystem.h"

#include "platform/unified_log.h"

#include <exception>
#include <memory>
#include <thread>

namespace mervo {
namespace {

/// The event store, opened once. What fails goes to the log.
class Store {
public:
    std::optional<platform::Authorization> authorization(platform::Entity entity)
    {
        try {
            return opened().authorization(entity);
        } catch (const std::exception& error) {
            platform::logError("Permissions", error.what());
            return std::nullopt;
        }
    }

    void request(platform::Entity entity)
    {
        try {
            opened().requestFullAccess(entity, platform::AccessPurpose::settle);
        } catch (const std::exception& error) {
            platform::logError("Permissions", error.what());
        }
    }

private:
    platform::EventStore& opened()
    {
        if (!store_)
            store_ = platform::openEventStore();
        return *store_;
    }

    std::unique_ptr<platform::EventStore> store_;
};

} // namespace

PermissionSystem PermissionSystem::real()
{
    const auto store = std::make_shared<Store>();
    return {
        .permission = platform::automation::permission,
        .launch = platform::automation::launch,
        .terminate = platform::automation::terminate,
        .authorization = [store](platform::Entity entity) { return store->authorization(entity); },
        .requestFullAccess = [store](platform::Entity entity) { store->request(entity); },
        .now = Clock::now,
        .sleep = [](std::chrono::milliseconds duration) { std::this_thread::sleep_for(duration); },
    };
}

} // namespace mervo
