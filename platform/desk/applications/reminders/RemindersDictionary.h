#pragma once

#include "platform/applescript/values/Dictionary.h"

namespace mervo::desk {

/// The numbers of Reminders' own terms.
namespace RemindersTerm {

enum Class : applescript::TermId { account = 1, list, reminder };

enum Property : applescript::TermId {
    defaultList = 1,
    defaultAccount,
    color,
    emblem,
    container,
    body,
    completed,
    flagged,
    completionDate,
    dueDate,
    alldayDueDate,
    remindMeDate,
    priority,
    creationDate,
    modificationDate,
};

enum Command : applescript::TermId { show = 1 };

} // namespace RemindersTerm

/// The words that Reminders adds to a script; the same object at every call.
const applescript::Dictionary& remindersDictionary();

} // namespace mervo::desk
