#include "core/tools/reminders/ReminderTools.h"

#include "core/tools/Arguments.h"
#include "core/tools/MissingBridge.h"

#include <array>

namespace mervo::Tools {

const Tool& reminderLists()
{
    static const Tool tool = withoutBridge("Reminders",
        {
            .id = "reminder.lists",
            .summary = "List every Reminders list - FLAT, groups/folders INCLUDED (AppleScript hides grouped lists; "
                       "EventKit sees them) - with active + completed counts. Read-only. CALL THIS FIRST to learn the "
                       "exact list= names. One line per list: TITLE || active=N || done=M.",
            .effect = Effect::read,
            .arguments = {},
            .build = Arguments::acceptAll(),
        });
    return tool;
}

const Tool& reminderFind()
{
    static const Tool tool = withoutBridge("Reminders",
        {
            .id = "reminder.find",
            .summary = "List reminders ([list=<name>] for one list else all, [includeCompleted=true], [limit=50]). "
                       "Read-only - native EventKit (sees grouped lists too). One line per reminder: list || todo|done "
                       "|| due || name.",
            .effect = Effect::read,
            .arguments = {optional("list", "name of one list; without it all lists"),
                optional("includeCompleted", "true: completed ones too", Formats::offUnlessTrue),
                optional("limit", "at most so many (50)", Formats::nativeLimit(50, {"the answer is empty"}))},
            .build = Arguments::acceptAll(),
        });
    return tool;
}

const Tool& reminderAdd()
{
    static const Tool tool = withoutBridge("Reminders",
        {
            .id = "reminder.add",
            .summary = "Create a reminder (name, [list], [due=YYYY-MM-DD], [notes]). Targets the named list (default: "
                       "the Reminders default list).",
            .effect = Effect::create,
            .arguments = {required("name", "what to be reminded of"),
                optional("list", "name of the list; without it the default list"),
                optional("due", "YYYY-MM-DD", Formats::day), optional("notes", "notes")},
            .build = Arguments::requiring({"name"}),
        });
    return tool;
}

const Tool& reminderAddList()
{
    static const Tool tool = withoutBridge("Reminders",
        {
            .id = "reminder.addList",
            .summary = "Create a Reminders list (name). No-op if a list with that name already exists (won't create a "
                       "duplicate). Use before reminder.add when the target list doesn't exist yet.",
            .effect = Effect::create,
            .arguments = {required("name", "name of the new list")},
            .build = Arguments::requiring({"name"}),
        });
    return tool;
}

const Tool& reminderRenameList()
{
    static const Tool tool = withoutBridge("Reminders",
        {
            .id = "reminder.renameList",
            .summary = "Rename a Reminders list (from=<current name>, to=<new name>). Reversible. Errors if no list "
                       "named from= exists.",
            .effect = Effect::create,
            .arguments = {required("from", "present name"), required("to", "new name")},
            .build = Arguments::requiring({"from", "to"}),
        });
    return tool;
}

const Tool& reminderUpdate()
{
    static const Tool tool = withoutBridge("Reminders",
        {
            .id = "reminder.update",
            .summary =
                "Set a new due date on the SINGLE incomplete reminder whose name contains `name` (due=YYYY-MM-DD "
                "or \"YYYY-MM-DD HH:MM\", [list=<name>] to scope). Refuses on 0 or >1 match. Native EventKit "
                "(reaches grouped lists); shifts existing alarms with the due date. Reversible, runs immediately "
                "(no approval).",
            .effect = Effect::create,
            .arguments = {required("name", "text that the name of exactly one open reminder contains", Formats::needle),
                required("due", "YYYY-MM-DD or YYYY-MM-DD HH:MM", Formats::moment),
                optional("list", "name of one list; without it all lists")},
            .build = Arguments::requiring({"name", "due"}),
        });
    return tool;
}

const Tool& reminderComplete()
{
    static const Tool tool = withoutBridge("Reminders",
        {
            .id = "reminder.complete",
            .summary = "Mark reminder(s) whose name contains `name` complete (or [complete=false] to reopen), in "
                       "[list=<name>] or - if list= omitted - EVERY match across ALL lists. Keep `name` specific. "
                       "Reversible, runs immediately (no approval).",
            .effect = Effect::create,
            .arguments = {required("name", "text that the name contains", Formats::needle),
                optional("list", "name of one list; without it all lists"),
                optional("complete", "false reopens (true)", Formats::onUnlessFalse)},
            .build = Arguments::requiring({"name"}),
        });
    return tool;
}

const Tool& reminderDelete()
{
    static const Tool tool = withoutBridge("Reminders",
        {
            .id = "reminder.delete",
            .summary = "Delete reminder(s) whose name contains `name`, in [list=<name>] or all lists. Irreversible -> "
                       "approval.",
            .effect = Effect::destructive,
            .arguments = {required("name", "text that the name contains", Formats::needle),
                optional("list", "name of one list; without it all lists")},
            .build = Arguments::requiring({"name"}),
        });
    return tool;
}

const Tool& reminderDeleteList()
{
    static const Tool tool = withoutBridge("Reminders",
        {
            .id = "reminder.deleteList",
            .summary = "Delete a Reminders list AND every reminder in it (name) - native EventKit, so it reaches "
                       "grouped/archived lists AppleScript can't. Deletes all lists sharing that exact title. "
                       "Irreversible -> approval.",
            .effect = Effect::destructive,
            .arguments = {required("name", "exact name of the list")},
            .build = Arguments::requiring({"name"}),
        });
    return tool;
}

const Tool& reminderClearCompleted()
{
    static const Tool tool = withoutBridge("Reminders",
        {
            .id = "reminder.clearCompleted",
            .summary = "Delete COMPLETED reminders only, in [list=<name>] or across all lists - native EventKit (sees "
                       "grouped lists). Active reminders are NEVER touched. Irreversible -> approval.",
            .effect = Effect::destructive,
            .arguments = {optional("list", "name of one list; without it all lists")},
            .build = Arguments::acceptAll(),
        });
    return tool;
}

} // namespace mervo::Tools

namespace mervo::ReminderTools {

std::span<const Tool* const> all()
{
    static const std::array tools{&Tools::reminderLists(), &Tools::reminderFind(), &Tools::reminderAdd(),
        &Tools::reminderAddList(), &Tools::reminderRenameList(), &Tools::reminderUpdate(), &Tools::reminderComplete(),
        &Tools::reminderDelete(), &Tools::reminderDeleteList(), &Tools::reminderClearCompleted()};
    return tools;
}

} // namespace mervo::ReminderTools
