#include "platform/desk/applications/reminders/ReminderObjects.h"

#include "platform/desk/applications/eventkit/EventValues.h"
#include "platform/desk/applications/reminders/RemindersDictionary.h"

#include <algorithm>

namespace mervo::desk {
namespace {

using namespace EventValues;
using applescript::Designation;
using applescript::makeRef;
using applescript::ScriptError;
using applescript::TermId;
using applescript::Value;
using applescript::ErrorNumber::cannotSet;
using applescript::ErrorNumber::noSuchObject;
using platform::Collection;
using platform::Reminder;
using platform::ReminderChange;
namespace CommonTerm = applescript::CommonTerm;
using Seen = EventSession::Seen<Reminder>;

constexpr const char* kAccountName = "Local";
constexpr std::int64_t kLowestPriority = 9;

Value objectsOf(RemindersApplication& owner, const Seen& look)
{
    std::vector<Value> found;
    for (const Reminder& reminder : look->items())
        found.push_back(Value::object(makeRef<ReminderObject>(owner, look, reminder)));
    return Value::list(std::move(found));
}

Value valueOf(RemindersApplication& owner, const Reminder& reminder, TermId property)
{
    using namespace RemindersTerm;
    switch (property) {
    case CommonTerm::name:
        return Value::text(reminder.title);
    case CommonTerm::id:
        return Value::text(reminder.uid);
    case body:
        return textOrMissing(reminder.notes);
    case completed:
        return Value::boolean(reminder.isCompleted);
    case flagged:
        return Value::boolean(reminder.isFlagged);
    case completionDate:
        return dateOrMissing(reminder.completed);
    case dueDate:
        return reminder.due ? dueValue(*reminder.due) : Value::missing();
    case alldayDueDate:
        return reminder.due ? dayValue(*reminder.due) : Value::missing();
    case remindMeDate:
        return reminder.absoluteAlarms.empty() ? Value::missing() : dateOrMissing(reminder.absoluteAlarms.front());
    case priority:
        return Value::integer(reminder.priority);
    case creationDate:
        return dateOrMissing(reminder.created);
    case modificationDate:
        return dateOrMissing(reminder.modified);
    default:
        return Value::object(makeRef<ListObject>(owner, reminder.list));
    }
}

Value columnOf(RemindersApplication& owner, const Seen& look, TermId property)
{
    std::vector<Value> found;
    for (const Reminder& reminder : look->items())
        found.push_back(valueOf(owner, reminder, property));
    return Value::list(std::move(found));
}

/// "#ff8000", as lists of reminders have it.
std::string colourOf(const Value& value)
{
    std::string colour = textOf(value);
    if (colour.size() != 7 || colour[0] != '#'
        || colour.find_first_not_of("0123456789abcdefABCDEF", 1) != std::string::npos)
        throw ScriptError(cannotSet);
    return colour;
}

int priorityOf(const Value& value)
{
    const std::int64_t priority = applescript::toInteger(value);
    if (priority < 0 || priority > kLowestPriority)
        throw ScriptError(cannotSet);
    return static_cast<int>(priority);
}

void takeDue(ReminderChange& change, const Value& value)
{
    change.clearDue = value.is(applescript::Kind::missing);
    if (!change.clearDue)
        change.due = dueOf(value);
}

void takeCompletion(ReminderChange& change, const Value& value)
{
    change.isCompleted = !value.is(applescript::Kind::missing);
    if (*change.isCompleted)
        change.completed = momentOf(value);
}

} // namespace

void takeProperty(ReminderChange& change, TermId property, const Value& value)
{
    using namespace RemindersTerm;
    switch (property) {
    case CommonTerm::name:
        change.title = textOf(value);
        break;
    case body:
        change.notes = textOf(value);
        break;
    case completed:
        change.isCompleted = applescript::toBoolean(value);
        break;
    case flagged:
        change.isFlagged = applescript::toBoolean(value);
        break;
    case completionDate:
        takeCompletion(change, value);
        break;
    case dueDate:
        takeDue(change, value);
        break;
    case alldayDueDate:
        takeDue(change, value);
        if (change.due)
            change.due->time.reset();
        break;
    case priority:
        change.priority = priorityOf(value);
        break;
    case remindMeDate:
        change.absoluteAlarms.emplace();
        if (!value.is(applescript::Kind::missing))
            change.absoluteAlarms->push_back(momentOf(value));
        break;
    default:
        throw ScriptError(cannotSet);
    }
}

const applescript::ClassTerm& RemindersObject::objectClass() const
{
    return *remindersDictionary().findClass(class_);
}

AllListsObject::AllListsObject(RemindersApplication& owner, TermId objectClass)
    : RemindersObject(owner, objectClass)
{
}

Designation AllListsObject::designation() const
{
    if (objectClass().id == CommonTerm::applicationClass)
        return {};
    return {Designation::Form::name, objectClass().name, Value::text(kAccountName), {}};
}

Value AllListsObject::get(TermId property)
{
    switch (property) {
    case RemindersTerm::defaultList:
        return Value::object(makeRef<ListObject>(owner(), session().defaultCollection()));
    case RemindersTerm::defaultAccount:
        return Value::object(makeRef<AllListsObject>(owner(), RemindersTerm::account));
    default:
        return Value::text(kAccountName);
    }
}

Value AllListsObject::every(TermId elementClass)
{
    if (elementClass == RemindersTerm::reminder)
        return objectsOf(owner(), session().reminders());
    std::vector<Value> found;
    if (elementClass == RemindersTerm::account)
        found.push_back(Value::object(makeRef<AllListsObject>(owner(), RemindersTerm::account)));
    if (elementClass == RemindersTerm::list) {
        for (const Collection& list : session().collections()->items())
            found.push_back(Value::object(makeRef<ListObject>(owner(), list)));
    }
    return Value::list(std::move(found));
}

Value AllListsObject::propertyOfEvery(TermId elementClass, TermId property)
{
    return elementClass == RemindersTerm::reminder ? columnOf(owner(), session().reminders(), property)
                                                   : Object::propertyOfEvery(elementClass, property);
}

ListObject::ListObject(RemindersApplication& owner, Collection list)
    : RemindersObject(owner, RemindersTerm::list)
    , list_(std::move(list))
{
}

Collection ListObject::current() const
{
    const auto now = session().collections();
    const Collection* found = now->find(list_);
    if (found == nullptr)
        throw ScriptError(noSuchObject);
    return *found;
}

Designation ListObject::designation() const
{
    return {Designation::Form::id, objectClass().name, Value::text(list_.id), {}};
}

Value ListObject::get(TermId property)
{
    const Collection list = current();
    switch (property) {
    case CommonTerm::name:
        return Value::text(list.title);
    case CommonTerm::id:
        return Value::text(list.id);
    case RemindersTerm::color:
        return textOrMissing(list.color);
    case RemindersTerm::emblem:
        return Value::missing();
    default:
        return Value::object(makeRef<AllListsObject>(owner(), RemindersTerm::account));
    }
}

void ListObject::set(TermId property, const Value& value)
{
    const Collection list = current();
    requireWritable(list);
    if (property == RemindersTerm::emblem)
        refuse("This desk’s Reminders keeps no emblem of a list.");
    session().change([&](platform::EventStore& store) {
        if (property == CommonTerm::name) {
            store.rename(list, textOf(value));
        } else {
            store.setColor(list, colourOf(value));
        }
    });
}

Value ListObject::every(TermId)
{
    return objectsOf(owner(), session().reminders(list_));
}

std::size_t ListObject::count(TermId)
{
    return session().reminders(list_)->items().size();
}

Value ListObject::propertyOfEvery(TermId, TermId property)
{
    return columnOf(owner(), session().reminders(list_), property);
}

bool ListObject::exists()
{
    return session().collections()->find(list_) != nullptr;
}

bool ListObject::isSame(const applescript::Object& other) const
{
    const auto* list = dynamic_cast<const ListObject*>(&other);
    return list != nullptr && list->list_.id == list_.id;
}

ReminderObject::ReminderObject(RemindersApplication& owner, Seen look, const Reminder& reminder)
    : RemindersObject(owner, RemindersTerm::reminder)
    , look_(std::move(look))
    , reminder_(&reminder)
{
}

Designation ReminderObject::designation() const
{
    return {Designation::Form::id, objectClass().name, Value::text(reminder_->uid),
        makeRef<ListObject>(owner(), reminder_->list)};
}

Value ReminderObject::get(TermId property)
{
    auto now = session().reminders(reminder_->list);
    const Reminder* reminder = now == look_ ? reminder_ : now->find(*reminder_);
    if (reminder == nullptr)
        throw ScriptError(noSuchObject);
    reminder_ = reminder;
    look_ = std::move(now);
    return valueOf(owner(), *reminder_, property);
}

void ReminderObject::change(const std::function<void(platform::EventStore&)>& stage)
{
    requireWritable(reminder_->list);
    try {
        session().change(stage);
    } catch (const ScriptError&) {
        if (!exists())
            throw ScriptError(noSuchObject);
        session().change(stage); // this script may itself have changed the file since it was looked at
    }
}

void ReminderObject::set(TermId property, const Value& value)
{
    ReminderChange change;
    takeProperty(change, property, value);
    const auto& alarms = reminder_->absoluteAlarms;
    if (change.absoluteAlarms && !alarms.empty()) // the first one is meant
        change.absoluteAlarms->insert(change.absoluteAlarms->end(), alarms.begin() + 1, alarms.end());
    this->change([&](platform::EventStore& store) { store.change(*reminder_, change); });
}

void ReminderObject::remove()
{
    change([this](platform::EventStore& store) { store.remove(*reminder_); });
}

void ReminderObject::moveTo(const Collection& list)
{
    requireWritable(list);
    change([&](platform::EventStore& store) { store.move(*reminder_, list); });
}

bool ReminderObject::exists()
{
    return session().reminders(reminder_->list)->find(*reminder_) != nullptr;
}

bool ReminderObject::isSame(const applescript::Object& other) const
{
    const auto* reminder = dynamic_cast<const ReminderObject*>(&other);
    return reminder != nullptr && identity(*reminder->reminder_) == identity(*reminder_);
}

} // namespace mervo::desk
