#include "platform/desk/applications/calendar/CalendarApplication.h"

#include "platform/desk/applications/calendar/CalendarDictionary.h"
#include "platform/desk/applications/calendar/CalendarObjects.h"
#include "platform/desk/applications/eventkit/EventValues.h"
#include "platform/desk/applications/eventkit/OwnProgram.h"

#include <algorithm>

namespace mervo::desk {
namespace {

using namespace EventValues;
using applescript::makeRef;
using applescript::Ref;
using applescript::Value;
using platform::Collection;
using platform::Event;

const Event& withUid(const Look<Event>& events, const std::string& uid)
{
    const auto found = std::ranges::find(events.items(), uid, &Event::uid);
    if (found == events.items().end())
        refuse("The event was made, and another program has taken it away.");
    return *found;
}

} // namespace

CalendarApplication::CalendarApplication(EventSession::Open open, Sections sections)
    : DeskApplicationBase(DeskApplication::calendar, sections)
    , session_(platform::Entity::events, std::move(open))
{
}

const applescript::Dictionary& CalendarApplication::dictionary() const
{
    return calendarDictionary();
}

Ref<applescript::Object> CalendarApplication::root()
{
    return makeRef<CalendarRootObject>(*this);
}

Value CalendarApplication::make(const applescript::MakeRequest& request)
{
    switch (request.newClass->id) {
    case CalendarTerm::event:
        return makeEvent(request);
    case CalendarTerm::calendar:
        return Value::object(
            makeRef<CalendarObject>(*this, session_.makeCollection(request, "A calendar needs a name.")));
    default:
        refuse("This desk’s Calendar makes events and calendars, and nothing else.");
    }
}

Value CalendarApplication::makeEvent(const applescript::MakeRequest& request)
{
    const auto* place = dynamic_cast<const CalendarObject*>(request.place.anchor.get());
    const auto* beside = dynamic_cast<const EventObject*>(request.place.anchor.get());
    const Collection calendar = place != nullptr ? place->current()
        : beside != nullptr                      ? beside->calendar().current()
                                                 : session_.defaultCollection();
    requireWritable(calendar);
    platform::EventChange event;
    for (const auto& [property, value] : request.properties)
        takeProperty(event, property, value);
    if (!event.start)
        refuse("An event needs a start date.");
    std::string uid;
    session_.change([&](platform::EventStore& store) { uid = store.add(calendar, event); });
    const auto events = session_.events(calendar);
    return Value::object(makeRef<EventObject>(makeRef<CalendarObject>(*this, calendar), events, withUid(*events, uid)));
}

void CalendarApplication::remove(applescript::Object& object)
{
    if (auto* event = dynamic_cast<EventObject*>(&object))
        return event->remove();
    const auto* calendar = dynamic_cast<const CalendarObject*>(&object);
    if (calendar == nullptr)
        refuse("This desk’s Calendar deletes events and calendars, and nothing else.");
    session_.removeCollection(calendar->current());
}

Value CalendarApplication::perform(const applescript::CommandCall& call)
{
    if (call.command != CalendarTerm::show)
        return Value(); // every change is saved, and every look is at what is there
    forEachObject<CalendarAppObject>(call.direct, "Only an event or a calendar can be shown.", [](auto& object) {
        if (!object.exists())
            throw applescript::ScriptError(applescript::ErrorNumber::noSuchObject);
    });
    showOwnProgram(DeskApplication::calendar, sections());
    return Value();
}

void registerCalendar(applescript::ApplicationRegistry& registry, Sections sections)
{
    registry.add({"Calendar", "iCal"}, "com.apple.iCal", calendarDictionary,
        [sections] { return std::make_unique<CalendarApplication>(platform::openEventStore, sections); });
}

} // namespace mervo::desk
