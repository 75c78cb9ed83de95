#include "platform/desk/applications/Desk.h"

#include "platform/desk/addressbook/ContactHealth.h"
#include "platform/desk/addressbook/ContactSettings.h"
#include "platform/desk/applications/ConsentGuard.h"
#include "platform/desk/applications/contacts/ContactsApplication.h"
#include "platform/desk/applications/finder/FinderApplication.h"
#include "platform/desk/applications/mail/MailApplication.h"
#include "platform/desk/applications/messages/MessagesApplication.h"
#include "platform/desk/applications/notes/NotesApplication.h"
#include "platform/desk/applications/systemevents/SystemEventsApplication.h"
#include "platform/desk/chat/ChatHealth.h"
#include "platform/desk/chat/ChatSettings.h"
#include "platform/desk/consent/ConsentHealth.h"
#include "platform/desk/consent/ConsentSettings.h"
#include "platform/desk/mail/MailHealth.h"
#include "platform/desk/mail/MailSettings.h"
#include "platform/desk/notebook/NotesHealth.h"
#include "platform/desk/notebook/NotesSettings.h"
#include "platform/desk/running/ApplicationHealth.h"
#include "platform/desk/running/ApplicationSettings.h"

#include <vector>

namespace mervo::desk {
namespace {

constexpr DeskPart kParts[] = {
    {registerMail, &kMailSection, &kMailHealth},
    {registerMessages, &kChatSection, &kChatHealth},
    {registerContacts, &kContactSection, &kContactHealth},
    {registerNotes, &kNotesSection, &kNotesHealth},
    {registerFinder},
    {registerSystemEvents, &kApplicationSection, &kApplicationHealth},
    {nullptr, &kConsentSection, &kConsentHealth},
};

} // namespace

std::span<const DeskPart> deskParts()
{
    return kParts;
}

Sections deskSections()
{
    static const std::vector<Section> sections = [] {
        std::vector<Section> found;
        for (const DeskPart& part : kParts) {
            if (part.section != nullptr)
                found.push_back(*part.section);
        }
        return found;
    }();
    return sections;
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
