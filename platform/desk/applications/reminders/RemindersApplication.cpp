#include "platform/desk/applications/reminders/RemindersApplication.h"

#include "platform/desk/applications/eventkit/EventValues.h"
#include "platform/desk/applications/eventkit/OwnProgram.h"
#include "platform/desk/applications/reminders/ReminderObjects.h"
#include "platform/desk/applications/reminders/RemindersDictionary.h"

#include <algorithm>

namespace mervo::desk {
namespace {

using namespace EventValues;
using applescript::makeRef;
using applescript::Ref;
using applescript::Value;
using platform::Collection;
using platform::Reminder;

} // namespace

RemindersApplication::RemindersApplication(EventSession::Open open, Sections sections)
    : DeskApplicationBase(DeskApplication::reminders, sections)
    , session_(platform::Entity::reminders, std::move(open))
{
}

const applescript::Dictionary& RemindersApplication::dictionary() const
{
    return remindersDictionary();
}

Ref<applescript::Object> RemindersApplication::root()
{
    return makeRef<AllListsObject>(*this, applescript::CommonTerm::applicationClass);
}

Value RemindersApplication::make(const applescript::MakeRequest& request)
{
    switch (request.newClass->id) {
    case RemindersTerm::list:
        return Value::object(makeRef<ListObject>(*this, session_.makeCollection(request, "A list needs a name.")));
    case RemindersTerm::reminder:
        return makeReminder(request);
    default:
        refuse("This desk’s Reminders makes reminders and lists, and nothing else.");
    }
}

Value RemindersApplication::makeReminder(const applescript::MakeRequest& request)
{
    const auto* place = dynamic_cast<const ListObject*>(request.place.anchor.get());
    const auto* beside = dynamic_cast<const ReminderObject*>(request.place.anchor.get());
    const Collection list = place != nullptr ? place->current()
        : beside != nullptr                  ? beside->list()
                                             : session_.defaultCollection();
    requireWritable(list);
    platform::ReminderChange reminder;
    for (const auto& [property, value] : request.properties)
        takeProperty(reminder, property, value);
    std::string uid;
    session_.change([&](platform::EventStore& store) { uid = store.add(list, reminder); });
    return reminderIn(list, uid);
}

Value RemindersApplication::reminderIn(const Collection& list, const std::string& uid)
{
    const auto look = session_.reminders(list);
    const auto found = std::ranges::find(look->items(), uid, &Reminder::uid);
    if (found == look->items().end())
        refuse("The reminder is there no more: another program has taken it away.");
    return Value::object(makeRef<ReminderObject>(*this, look, *found));
}

void RemindersApplication::remove(applescript::Object& object)
{
    if (auto* reminder = dynamic_cast<ReminderObject*>(&object))
        return reminder->remove();
    const auto* list = dynamic_cast<const ListObject*>(&object);
    if (list == nullptr)
        refuse("This desk’s Reminders deletes reminders and lists, and nothing else.");
    session_.removeCollection(list->current());
}

Value RemindersApplication::move(applescript::Object& object, const applescript::Insertion& place)
{
    auto* reminder = dynamic_cast<ReminderObject*>(&object);
    const auto* list = dynamic_cast<const ListObject*>(place.anchor.get());
    if (reminder == nullptr || list == nullptr)
        refuse("This desk’s Reminders moves reminders to lists, and nothing else.");
    const std::string uid = reminder->uid();
    const Collection destination = list->current();
    reminder->moveTo(destination);
    return reminderIn(destination, uid);
}

Value RemindersApplication::perform(const applescript::CommandCall& call)
{
    forEachObject<RemindersObject>(call.direct, "Only a reminder or a list can be shown.", [](auto& object) {
        if (!object.exists())
            throw applescript::ScriptError(applescript::ErrorNumber::noSuchObject);
    });
    showOwnProgram(DeskApplication::reminders, sections());
    return Value();
}

void registerReminders(applescript::ApplicationRegistry& registry, Sections sections)
{
    registry.add({"Reminders"}, "com.apple.reminders", remindersDictionary,
        [sections] { return std::make_unique<RemindersApplication>(platform::openEventStore, sections); });
}

} // namespace mervo::desk
