#include "platform/linux/eventkit/EventKitModule.h"

namespace mervo::platform {

std::unique_ptr<EventStore> openEventStore()
{
    EventStore* (*open)() = nullptr;
    try {
        open = load(eventkit::kEventKitModule);
    } catch (const std::runtime_error& error) {
        throw EventStoreError(
            std::string("The part of the system that holds calendars and reminders cannot be loaded: ") + error.what());
    }
    return std::unique_ptr<EventStore>(open());
}

} // namespace mervo::platform
