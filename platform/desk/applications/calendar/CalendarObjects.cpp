#include "platform/desk/applications/calendar/CalendarObjects.h"

#include "platform/desk/applications/calendar/CalendarDictionary.h"
#include "platform/desk/applications/eventkit/EventValues.h"

#include <algorithm>
#include <array>
#include <cstdio>

namespace mervo::desk {
namespace {

using namespace EventValues;
using applescript::Designation;
using applescript::makeRef;
using applescript::Ref;
using applescript::ScriptError;
using applescript::Symbol;
using applescript::TermId;
using applescript::Value;
using applescript::ErrorNumber::cannotSet;
using platform::Collection;
using platform::Event;
using platform::EventChange;
namespace CommonTerm = applescript::CommonTerm;

constexpr int kColourStep = 257; // from 8 to 16 bits

/// "#ff8000" as a list of red, green and blue, each up to 65535.
Value colourValue(const std::string& colour)
{
    unsigned red = 0;
    unsigned green = 0;
    unsigned blue = 0;
    if (std::sscanf(colour.c_str(), "#%2x%2x%2x", &red, &green, &blue) != 3)
        return Value::missing();
    std::vector<Value> parts;
    for (const unsigned part : {red, green, blue})
        parts.push_back(Value::integer(static_cast<std::int64_t>(part) * kColourStep));
    return Value::list(std::move(parts));
}

std::string colourOf(const Value& value)
{
    if (!value.is(applescript::Kind::list) || value.asList().size() != 3)
        throw ScriptError(cannotSet);
    std::string colour = "#";
    for (const Value& part : value.asList().items()) {
        const std::int64_t level = applescript::toInteger(part);
        if (level < 0 || level > 0xFFFF)
            throw ScriptError(cannotSet);
        std::array<char, 3> digits{};
        std::snprintf(digits.data(), digits.size(), "%02x", static_cast<unsigned>(level / kColourStep));
        colour += digits.data();
    }
    return colour;
}

constexpr std::array<std::pair<const char*, const char*>, 3> kStatus{
    {{"CANCELLED", "cancelled"}, {"TENTATIVE", "tentative"}, {"CONFIRMED", "confirmed"}}};

Value statusValue(const std::string& status)
{
    for (const auto& [stored, word] : kStatus) {
        if (status == stored)
            return Value::constant(Symbol(word));
    }
    return Value::constant(Symbol("none"));
}

std::string statusOf(const Value& value)
{
    if (!value.is(applescript::Kind::constant))
        throw ScriptError(cannotSet);
    for (const auto& [stored, word] : kStatus) {
        if (value.asSymbol() == Symbol(word))
            return stored;
    }
    if (value.asSymbol() == Symbol("none"))
        return {};
    throw ScriptError(cannotSet);
}

Value valueOf(const Event& event, TermId property)
{
    using namespace CalendarTerm;
    switch (property) {
    case summary:
        return textOrMissing(event.title);
    case location:
        return textOrMissing(event.location);
    case description:
        return textOrMissing(event.notes);
    case url:
        return textOrMissing(event.url);
    case startDate:
        return dateOrMissing(event.start);
    case endDate:
        return dateOrMissing(event.end);
    case alldayEvent:
        return Value::boolean(event.isAllDay);
    case uid:
        return Value::text(event.uid);
    case recurrence:
        return textOrMissing(event.recurrence);
    case status:
        return statusValue(event.status);
    case stampDate:
        return dateOrMissing(event.stamp);
    default:
        return Value::integer(event.sequence);
    }
}

Value valueOf(const Collection& calendar, TermId property)
{
    switch (property) {
    case CommonTerm::name:
        return Value::text(calendar.title);
    case CalendarTerm::color:
        return colourValue(calendar.color);
    case CalendarTerm::description:
        return Value::missing();
    case CalendarTerm::writable:
        return Value::boolean(calendar.isWritable);
    default:
        return Value::text(calendar.id);
    }
}

} // namespace

void takeProperty(EventChange& change, TermId property, const Value& value)
{
    using namespace CalendarTerm;
    switch (property) {
    case summary:
        change.title = textOf(value);
        break;
    case location:
        change.location = textOf(value);
        break;
    case description:
        change.notes = textOf(value);
        break;
    case url:
        change.url = textOf(value);
        break;
    case startDate:
        change.start = momentOf(value);
        break;
    case endDate:
        change.end = momentOf(value);
        break;
    case alldayEvent:
        change.isAllDay = applescript::toBoolean(value);
        break;
    case recurrence:
        change.recurrence = textOf(value);
        break;
    case status:
        change.status = statusOf(value);
        break;
    default:
        throw ScriptError(cannotSet);
    }
}

const applescript::ClassTerm& CalendarAppObject::objectClass() const
{
    return *calendarDictionary().findClass(class_);
}

CalendarRootObject::CalendarRootObject(CalendarApplication& owner)
    : CalendarAppObject(owner, CommonTerm::applicationClass)
{
}

Value CalendarRootObject::get(TermId)
{
    return Value::missing();
}

Value CalendarRootObject::every(TermId)
{
    std::vector<Value> found;
    for (const Collection& calendar : session().collections()->items())
        found.push_back(Value::object(makeRef<CalendarObject>(owner(), calendar)));
    return Value::list(std::move(found));
}

CalendarObject::CalendarObject(CalendarApplication& owner, Collection calendar)
    : CalendarAppObject(owner, CalendarTerm::calendar)
    , calendar_(std::move(calendar))
{
}

Collection CalendarObject::current() const
{
    const auto now = session().collections();
    const Collection* found = now->find(calendar_);
    if (found == nullptr)
        throw ScriptError(applescript::ErrorNumber::noSuchObject);
    return *found;
}

Designation CalendarObject::designation() const
{
    return {Designation::Form::id, objectClass().name, Value::text(calendar_.id), {}};
}

Value CalendarObject::get(TermId property)
{
    return valueOf(current(), property);
}

void CalendarObject::set(TermId property, const Value& value)
{
    const Collection calendar = current();
    requireWritable(calendar);
    if (property == CalendarTerm::description)
        refuse("This desk’s Calendar keeps no description of a calendar.");
    session().change([&](platform::EventStore& store) {
        if (property == CommonTerm::name) {
            store.rename(calendar, textOf(value));
        } else {
            store.setColor(calendar, colourOf(value));
        }
    });
}

Value CalendarObject::every(TermId)
{
    const auto look = session().events(calendar_);
    std::vector<Value> found;
    for (const Event& event : look->items())
        found.push_back(Value::object(makeRef<EventObject>(Ref<CalendarObject>(this), look, event)));
    return Value::list(std::move(found));
}

std::size_t CalendarObject::count(TermId)
{
    return session().events(calendar_)->items().size();
}

Value CalendarObject::withId(TermId, const Value& id)
{
    const auto look = session().events(calendar_);
    const std::string uid = applescript::toString(id);
    const auto& events = look->items();
    const auto found = std::ranges::find(events, uid, &Event::uid);
    return found == events.end() ? Value()
                                 : Value::object(makeRef<EventObject>(Ref<CalendarObject>(this), look, *found));
}

Value CalendarObject::propertyOfEvery(TermId, TermId property)
{
    const auto look = session().events(calendar_);
    std::vector<Value> found;
    for (const Event& event : look->items())
        found.push_back(valueOf(event, property));
    return Value::list(std::move(found));
}

bool CalendarObject::exists()
{
    return session().collections()->find(calendar_) != nullptr;
}

bool CalendarObject::isSame(const applescript::Object& other) const
{
    const auto* calendar = dynamic_cast<const CalendarObject*>(&other);
    return calendar != nullptr && calendar->calendar_.id == calendar_.id;
}

EventObject::EventObject(Ref<CalendarObject> calendar, EventSession::Seen<Event> look, const Event& event)
    : CalendarAppObject(calendar->owner(), CalendarTerm::event)
    , calendar_(std::move(calendar))
    , look_(std::move(look))
    , event_(&event)
{
}

const Event& EventObject::current()
{
    auto now = session().events(event_->calendar);
    const Event* event = now == look_ ? event_ : now->find(*event_);
    if (event == nullptr)
        throw ScriptError(applescript::ErrorNumber::noSuchObject);
    event_ = event;
    look_ = std::move(now);
    return *event_;
}

Designation EventObject::designation() const
{
    return {Designation::Form::id, objectClass().name, Value::text(event_->uid), calendar_};
}

Value EventObject::get(TermId property)
{
    return valueOf(current(), property);
}

void EventObject::change(const std::function<void(platform::EventStore&)>& stage)
{
    requireWritable(event_->calendar);
    try {
        session().change(stage);
    } catch (const ScriptError&) {
        if (!exists())
            throw ScriptError(applescript::ErrorNumber::noSuchObject);
        session().change(stage); // this script may itself have changed the file since it was looked at
    }
}

void EventObject::set(TermId property, const Value& value)
{
    EventChange change;
    takeProperty(change, property, value);
    this->change([&](platform::EventStore& store) { store.change(*event_, change); });
}

void EventObject::remove()
{
    change([this](platform::EventStore& store) { store.remove(*event_); });
}

bool EventObject::exists()
{
    return session().events(event_->calendar)->find(*event_) != nullptr;
}

bool EventObject::isSame(const applescript::Object& other) const
{
    const auto* event = dynamic_cast<const EventObject*>(&other);
    return event != nullptr && identity(*event->event_) == identity(*event_);
}

} // namespace mervo::desk
