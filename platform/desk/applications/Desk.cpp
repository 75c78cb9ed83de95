#include "platform/desk/applications/Desk.h"

#include "platform/desk/addressbook/ContactHealth.h"
#include "platform/desk/applications/ConsentGuard.h"
#include "platform/desk/applications/calendar/CalendarApplication.h"
#include "platform/desk/applications/contacts/ContactsApplication.h"
#include "platform/desk/applications/finder/FinderApplication.h"
#include "platform/desk/applications/mail/MailApplication.h"
#include "platform/desk/applications/messages/MessagesApplication.h"
#include "platform/desk/applications/notes/NotesApplication.h"
#include "platform/desk/applications/reminders/RemindersApplication.h"
#include "platform/desk/applications/systemevents/SystemEventsApplication.h"
#include "platform/desk/applications/terminals/TerminalApplication.h"
#include "platform/desk/chat/ChatHealth.h"
#include "platform/desk/consent/ConsentHealth.h"
#include "platform/desk/events/EventHealth.h"
#include "platform/desk/jobs/JobHealth.h"
#include "platform/desk/mail/MailHealth.h"
#include "platform/desk/notebook/NotesHealth.h"
#include "platform/desk/running/ApplicationHealth.h"
#include "platform/desk/terminal/TerminalHealth.h"

namespace mervo::desk {
namespace {

constexpr DeskPart kParts[] = {
    {registerMail, &kMailHealth},
    {registerMessages, &kChatHealth},
    {registerCalendar, &kEventHealth},
    {registerReminders, &kReminderHealth},
    {registerContacts, &kContactHealth},
    {registerNotes, &kNotesHealth},
    {registerFinder},
    {registerSystemEvents, &kApplicationHealth},
    {registerTerminals, &kTerminalHealth},
    {nullptr, &kConsentHealth},
    {nullptr, &kJobHealth},
};

} // namespace

std::span<const DeskPart> deskParts()
{
    return kParts;
}

void registerDesk(applescript::ApplicationRegistry& registry)
{
    registry.setGuard(consentGuard(deskSections()));
    for (const DeskPart& part : kParts) {
        if (part.add != nullptr)
            part.add(registry, deskSections());
    }
}

} // namespace mervo::desk
