#include "platform/desk/addressbook/ContactSettings.h"
#include "platform/desk/applications/Desk.h"
#include "platform/desk/chat/ChatSettings.h"
#include "platform/desk/consent/ConsentSettings.h"
#include "platform/desk/events/EventSettings.h"
#include "platform/desk/jobs/JobSettings.h"
#include "platform/desk/mail/MailSettings.h"
#include "platform/desk/notebook/NotesSettings.h"
#include "platform/desk/running/ApplicationSettings.h"
#include "platform/desk/terminal/TerminalSettings.h"

namespace mervo::desk {
namespace {

// Apart from the applications, which a reader of desk.toml need not bring along.
constexpr Section kSections[] = {kMailSection, kChatSection, kEventSection, kReminderSection, kContactSection,
    kNotesSection, kApplicationSection, kTerminalSection, kConsentSection, kJobSection};

} // namespace

Sections deskSections()
{
    return kSections;
}

} // namespace mervo::desk
