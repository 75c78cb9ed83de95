#include "core/tools/calendar/EventKitAccess.h"

namespace mervo::EventKitAccess {

namespace {

using platform::Authorization;

std::string labelOf(platform::Entity entity)
{
    return entity == platform::Entity::events ? "Calendars" : "Reminders";
}

bool request(platform::EventStore& store, platform::Entity entity)
{
    try {
        return store.requestFullAccess(entity, platform::AccessPurpose::use);
    } catch (const platform::EventStoreError& error) {
        throw AccessError::requestFailed(error.what());
    }
}

void check(platform::EventStore& store, platform::Entity entity)
{
    switch (store.authorization(entity)) {
    case Authorization::restricted:
        throw AccessError::restricted(labelOf(entity));
    case Authorization::fullAccess:
        return;
    case Authorization::denied:
        throw AccessError::denied(labelOf(entity));
    case Authorization::notDetermined:
    case Authorization::writeOnly:
        if (!request(store, entity))
            throw AccessError::denied(labelOf(entity));
    }
}

} // namespace

AccessError AccessError::denied(const std::string& label)
{
    return AccessError(
        label + " access not granted. Allow it in System Settings → Privacy & Security → " + label + ", then retry.");
}

AccessError AccessError::restricted(const std::string& label)
{
    return AccessError(label + " access is restricted by a system policy (MDM/parental controls).");
}

AccessError AccessError::requestFailed(const std::string& text)
{
    return AccessError("EventKit access request failed: " + text);
}

std::unique_ptr<platform::EventStore> store(const OpenStore& open, platform::Entity entity)
{
    auto opened = open();
    check(*opened, entity);
    return opened;
}

} // namespace mervo::EventKitAccess
