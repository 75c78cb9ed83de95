#include "platform/desk/applications/calendar/CalendarDictionary.h"

namespace mervo::desk {
namespace {

using applescript::ClassTerm;
using applescript::kSettable;
namespace CommonTerm = applescript::CommonTerm;
using Direct = applescript::CommandTerm::Direct;

std::vector<ClassTerm> classes()
{
    using namespace CalendarTerm;
    return {
        {CommonTerm::applicationClass, "application", "applications", {}, {calendar}},
        {calendar, "calendar", "calendars",
            {{CommonTerm::name, "name", kSettable}, {CommonTerm::id, "id"}, {uid, "uid"}, {color, "color", kSettable},
                {description, "description", kSettable}, {writable, "writable"}},
            {event}},
        {event, "event", "events",
            {{summary, "summary", kSettable}, {location, "location", kSettable},
                {description, "description", kSettable}, {url, "url", kSettable}, {startDate, "start date", kSettable},
                {endDate, "end date", kSettable}, {alldayEvent, "allday event", kSettable}, {uid, "uid"},
                {recurrence, "recurrence", kSettable}, {status, "status", kSettable}, {stampDate, "stamp date"},
                {sequence, "sequence"}},
            {displayAlarm, attendee}},
        {displayAlarm, "display alarm", "display alarms",
            {{triggerInterval, "trigger interval"}, {triggerDate, "trigger date"}}},
        {attendee, "attendee", "attendees",
            {{displayName, "display name"}, {email, "email"}, {participationStatus, "participation status"}}},
    };
}

} // namespace

const applescript::Dictionary& calendarDictionary()
{
    using namespace CalendarTerm;
    static const applescript::Dictionary dictionary("Calendar", classes(),
        {{show, "show"}, {save, "save", {}, Direct::optional}, {reloadCalendars, "reload calendars", {}, Direct::none}},
        {"none", "cancelled", "tentative", "confirmed"});
    return dictionary;
}

} // namespace mervo::desk
