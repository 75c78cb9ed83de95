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
#include <stdexcept>

namespace mervo::Tools {

namespace {

/// The order of publication.
constexpr std::string_view kOrder[]{
    // mail: reading
    "mail.accounts",
    "mail.headers",
    "mail.audit",
    "mail.search",
    "mail.body",
    "mail.open",
    "mail.messageId",
    // composing and notifying
    "mail.draft",
    "mail.send",
    "mail.notify",
    "imessage.notify",
    "mail.reply",
    "mail.replyAll",
    "mail.forward",
    // bulk
    "mail.delete",
    "mail.move",
    "mail.archive",
    "mail.flag",
    "mail.junk",
    // calendar
    "cal.find",
    "cal.update",
    "cal.add",
    "cal.delete",
    // reminders
    "reminder.lists",
    "reminder.find",
    "reminder.add",
    "reminder.addList",
    "reminder.renameList",
    "reminder.update",
    "reminder.complete",
    "reminder.delete",
    "reminder.deleteList",
    "reminder.clearCompleted",
    // notes
    "note.list",
    "note.find",
    "note.read",
    "note.add",
    "note.open",
    "note.update",
    "note.delete",
    // contacts, messages, the Finder, applications, the manual
    "contact.find",
    "contact.add",
    "imessage.send",
    "imessage.read",
    "finder.reveal",
    "app.quit",
    "how_it_works",
    // automations
    "auto.list",
    "auto.log",
    "auto.add",
    "auto.edit",
    "auto.enable",
    "auto.disable",
    "auto.run",
    "auto.rm",
    // the operator channel
    "ask",
    "ask.answer",
    "ask.answers",
    "ask.harvest",
    "feedback.tell",
    "feedback.rm",
};

std::vector<const Tool*> ofAllFamilies()
{
    std::vector<const Tool*> tools;
    for (const auto family : {MailReadTools::all(), MailComposeTools::all(), MailBulkTools::all(), CalendarTools::all(),
             ReminderTools::all(), NoteTools::all(), ContactTools::all(), MessageTools::all(), AppTools::all(),
             GuideTools::all(), AutomationTools::all(), AskTools::all()})
        tools.insert(tools.end(), family.begin(), family.end());
    return tools;
}

/// Throws std::logic_error when the order and the families disagree: a mistake of whoever added a tool.
std::vector<const Tool*> inOrder(std::vector<const Tool*> tools)
{
    std::vector<const Tool*> ordered;
    for (const std::string_view id : kOrder) {
        const auto found = std::ranges::find(tools, id, &Tool::id);
        if (found == tools.end())
            throw std::logic_error("the order of the catalogue names " + std::string(id) + ", which no family has");
        ordered.push_back(*found);
        tools.erase(found);
    }
    if (!tools.empty())
        throw std::logic_error("the order of the catalogue lacks " + tools.front()->id);
    return ordered;
}

} // namespace

std::span<const Tool* const> all()
{
    static const std::vector<const Tool*> tools = inOrder(ofAllFamilies());
    return tools;
}

const Tool* find(std::string_view id)
{
    const auto tools = all();
    const auto found = std::ranges::find(tools, id, &Tool::id);
    return found == tools.end() ? nullptr : *found;
}

} // namespace mervo::Tools
