#include "core/catalogue/Catalogue.h"

#include "core/automations/tools/AutomationTools.h"
#include "core/feedback/AskTools.h"
#include "core/tools/apps/AppTools.h"
#include "core/tools/calendar/CalendarTools.h"
#include "core/tools/contacts/ContactTools.h"
#include "core/tools/guides/GuideTools.h"
#include "core/tools/mail/MailTools.h"
#include "core/tools/messages/MessageTools.h"
#include "core/tools/notes/NoteTools.h"
#include "core/tools/reminders/ReminderTools.h"

#include <algorithm>

namespace mervo::Tools {

namespace {

std::vector<const Tool*> collected()
{
    std::vector<const Tool*> tools{
        // mail: reading
        &mailAccounts(),
        &mailHeaders(),
        &mailAudit(),
        &mailSearch(),
        &mailBody(),
        &mailOpen(),
        &mailMessageId(),
        // composing and notifying
        &mailDraft(),
        &mailSend(),
        &mailNotify(),
        &imessageNotify(),
        &mailReply(),
        &mailReplyAll(),
        &mailForward(),
        // bulk
        &mailDelete(),
        &mailMove(),
        &mailArchive(),
        &mailFlag(),
        &mailJunk(),
        // calendar
        &calFind(),
        &calUpdate(),
        &calAdd(),
        &calDelete(),
        // reminders
        &reminderLists(),
        &reminderFind(),
        &reminderAdd(),
        &reminderAddList(),
        &reminderRenameList(),
        &reminderUpdate(),
        &reminderComplete(),
        &reminderDelete(),
        &reminderDeleteList(),
        &reminderClearCompleted(),
        // notes
        &noteList(),
        &noteFind(),
        &noteRead(),
        &noteAdd(),
        &noteOpen(),
        &noteUpdate(),
        &noteDelete(),
        // contacts, messages, the Finder, applications, the manual
        &contactFind(),
        &contactAdd(),
        &imessageSend(),
        &imessageRead(),
        &finderReveal(),
        &appQuit(),
        &howItWorks(),
    };
    for (const auto family : {AutomationTools::all(), AskTools::all()})
        tools.insert(tools.end(), family.begin(), family.end());
    return tools;
}

} // namespace

std::span<const Tool* const> all()
{
    static const std::vector<const Tool*> tools = collected();
    return tools;
}

const Tool* find(std::string_view id)
{
    const auto tools = all();
    const auto found = std::find_if(tools.begin(), tools.end(), [&](const Tool* tool) { return tool->id == id; });
    return found == tools.end() ? nullptr : *found;
}

} // namespace mervo::Tools
