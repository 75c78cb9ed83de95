#pragma once

#include "platform/applescript/values/Dictionary.h"

namespace mervo::desk {

/// The numbers of Calendar's own terms.
namespace CalendarTerm {

enum Class : applescript::TermId { calendar = 1, event, displayAlarm, attendee };

enum Property : applescript::TermId {
    uid = 1,
    color,
    description,
    writable,
    summary,
    location,
    url,
    startDate,
    endDate,
    alldayEvent,
    recurrence,
    status,
    stampDate,
    sequence,
    triggerInterval,
    triggerDate,
    displayName,
    email,
    participationStatus,
};

enum Command : applescript::TermId { show = 1, save, reloadCalendars };

} // namespace CalendarTerm

/// The words that Calendar adds to a script; the same object at every call.
const applescript::Dictionary& calendarDictionary();

} // namespace mervo::desk
