#include "platform/desk/applications/reminders/RemindersDictionary.h"

namespace mervo::desk {
namespace {

using applescript::ClassTerm;
using applescript::kSettable;
namespace CommonTerm = applescript::CommonTerm;

std::vector<ClassTerm> classes()
{
    using namespace RemindersTerm;
    const applescript::PropertyTerm id{CommonTerm::id, "id"}, name{CommonTerm::name, "name", kSettable};
    return {
        {CommonTerm::applicationClass, "application", "applications",
            {{defaultList, "default list"}, {defaultAccount, "default account"}}, {account, list, reminder}},
        {account, "account", "accounts", {{CommonTerm::name, "name"}, id}, {list, reminder}},
        {list, "list", "lists",
            {name, id, {color, "color", kSettable}, {emblem, "emblem", kSettable}, {container, "container"}},
            {reminder}},
        {reminder, "reminder", "reminders",
            {name, {body, "body", kSettable}, id, {completed, "completed", kSettable}, {flagged, "flagged", kSettable},
                {completionDate, "completion date", kSettable}, {dueDate, "due date", kSettable},
                {alldayDueDate, "allday due date", kSettable}, {remindMeDate, "remind me date", kSettable},
                {priority, "priority", kSettable}, {container, "container"}, {creationDate, "creation date"},
                {modificationDate, "modification date"}}},
    };
}

} // namespace

const applescript::Dictionary& remindersDictionary()
{
    static const applescript::Dictionary dictionary("Reminders", classes(), {{RemindersTerm::show, "show"}});
    return dictionary;
}

} // namespace mervo::desk
