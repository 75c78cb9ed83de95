#include "platform/linux/eventkit/EventKitModule.h"

#include "platform/desk/applications/Desk.h"
#include "platform/desk/consent/Consent.h"
#include "platform/desk/events/EventSettings.h"
#include "platform/desk/eventstore/DeskEventStore.h"
#include "platform/desk/settings/Places.h"

namespace mervo::platform::eventkit {

EventStore* mervoEventStore()
{
    try {
        const auto configuration = desk::Configuration::load(desk::deskSections());
        return new desk::DeskEventStore(desk::eventSettings(configuration, Entity::events),
            desk::eventSettings(configuration, Entity::reminders), desk::cacheFolder() / "items",
            desk::Consent::ofDesk(desk::deskSections()));
    } catch (const desk::ConfigurationError& error) {
        throw EventStoreError(error.what());
    }
}

} // namespace mervo::platform::eventkit
