#include "core/tools/reminders/ReminderTools.h"

#include "core/foundation/Text.h"
#include "core/tools/Arguments.h"
#include "core/tools/reminders/ReminderScripts.h"
#include "core/tools/reminders/RemindersService.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string>

namespace mervo::Tools {

namespace {

constexpr std::int64_t kDefaultLimit = 50;

RemindersService reminders()
{
    return RemindersService(platform::openEventStore);
}

std::string runFind(const Args& args)
{
    const bool all = Text::equalsIgnoringCase(Arguments::optional(args, "includeCompleted"), "true");
    return reminders().find(Arguments::optional(args, "list"),
        all ? RemindersService::Completed::included : RemindersService::Completed::leftOut,
        Arguments::wholeNumber(Arguments::optional(args, "limit")).value_or(kDefaultLimit));
}

std::string runUpdate(const Args& args)
{
    return reminders().update(
        Arguments::required(args, "name"), Arguments::optional(args, "list"), Arguments::required(args, "due"));
}

Invocation buildAdd(const Args& args)
{
    return {ReminderScripts::add(),
        {Arguments::required(args, "name"), Arguments::optional(args, "list"), Arguments::optional(args, "due"),
            Arguments::optional(args, "notes")}};
}

Invocation buildAddList(const Args& args)
{
    return {ReminderScripts::addList(), {Arguments::required(args, "name")}};
}

Invocation buildRenameList(const Args& args)
{
    const std::string& from = Arguments::required(args, "from");
    return {ReminderScripts::renameList(), {from, Arguments::required(args, "to")}};
}

Invocation buildComplete(const Args& args)
{
    const std::string& name = Arguments::required(args, "name");
    return {ReminderScripts::complete(),
        {Arguments::optional(args, "list"), name, Arguments::isOn(args, "complete") ? "1" : "0"}};
}

Invocation buildDelete(const Args& args)
{
    const std::string& name = Arguments::required(args, "name");
    return {ReminderScripts::remove(), {Arguments::optional(args, "list"), name}};
}

std::optional<std::string> previewDeleteList(const Args& args)
{
    const std::string name = Arguments::optional(args, "name");
    if (name.empty())
        return std::nullopt;
    return "Deletes list \"" + name + "\" and its " + std::to_string(reminders().listCount(name))
        + " reminder(s) - irreversible.";
}

std::optional<std::string> previewClearCompleted(const Args& args)
{
    const std::string list = Arguments::optional(args, "list");
    return "Deletes " + std::to_string(reminders().completedCount(list)) + " completed reminder(s) from "
        + RemindersService::scope(list) + " - active ones untouched, irreversible.";
}

} // namespace

const Tool& reminderLists()
{
    static const Tool tool{
        .id = "reminder.lists",
        .summary = "List every Reminders list - FLAT, groups/folders INCLUDED (AppleScript hides grouped lists; "
                   "EventKit sees them) - with active + completed counts. Read-only. CALL THIS FIRST to learn the "
                   "exact list= names. One line per list: TITLE || active=N || done=M.",
        .effect = Effect::read,
        .arguments = {},
        .build = Arguments::acceptAll(),
        .nativeRun = [](const Args&) { return reminders().listAll(); },
    };
    return tool;
}

const Tool& reminderFind()
{
    static const Tool tool{
        .id = "reminder.find",
        .summary = "List reminders ([list=<name>] for one list else all, [includeCompleted=true], [limit=50]). "
                   "Read-only - native EventKit (sees grouped lists too). One line per reminder: list || todo|done "
                   "|| due || name.",
        .effect = Effect::read,
        .arguments = {optional("list", "name of one list; without it all lists"),
            optional("includeCompleted", "true: completed ones too", Formats::offUnlessTrue),
            optional("limit", "at most so many (50)", Formats::nativeLimit(kDefaultLimit, {"the answer is empty"}))},
        .build = Arguments::acceptAll(),
        .nativeRun = runFind,
    };
    return tool;
}

const Tool& reminderAdd()
{
    static const Tool tool{
        .id = "reminder.add",
        .summary = "Create a reminder (name, [list], [due=YYYY-MM-DD], [notes]). Targets the named list (default: "
                   "the Reminders default list).",
        .effect = Effect::create,
        .arguments = {required("name", "what to be reminded of"),
            optional("list", "name of the list; without it the default list"),
            optional("due", "YYYY-MM-DD", Formats::day), optional("notes", "notes")},
        .build = buildAdd,
    };
    return tool;
}

const Tool& reminderAddList()
{
    static const Tool tool{
        .id = "reminder.addList",
        .summary = "Create a Reminders list (name). No-op if a list with that name already exists (won't create a "
                   "duplicate). Use before reminder.add when the target list doesn't exist yet.",
        .effect = Effect::create,
        .arguments = {required("name", "name of the new list")},
        .build = buildAddList,
    };
    return tool;
}

const Tool& reminderRenameList()
{
    static const Tool tool{
        .id = "reminder.renameList",
        .summary = "Rename a Reminders list (from=<current name>, to=<new name>). Reversible. Errors if no list "
                   "named from= exists.",
        .effect = Effect::create,
        .arguments = {required("from", "present name"), required("to", "new name")},
        .build = buildRenameList,
    };
    return tool;
}

const Tool& reminderUpdate()
{
    static const Tool tool{
        .id = "reminder.update",
        .summary = "Set a new due date on the SINGLE incomplete reminder whose name contains `name` (due=YYYY-MM-DD "
                   "or \"YYYY-MM-DD HH:MM\", [list=<name>] to scope). Refuses on 0 or >1 match. Native EventKit "
                   "(reaches grouped lists); shifts existing alarms with the due date. Reversible, runs immediately "
                   "(no approval).",
        .effect = Effect::create,
        .arguments = {required("name", "text that the name of exactly one open reminder contains", Formats::needle),
            required("due", "YYYY-MM-DD or YYYY-MM-DD HH:MM", Formats::moment),
            optional("list", "name of one list; without it all lists")},
        .build = Arguments::requiring({"name", "due"}),
        .nativeRun = runUpdate,
    };
    return tool;
}

const Tool& reminderComplete()
{
    static const Tool tool{
        .id = "reminder.complete",
        .summary = "Mark reminder(s) whose name contains `name` complete (or [complete=false] to reopen), in "
                   "[list=<name>] or - if list= omitted - EVERY match across ALL lists. Keep `name` specific. "
                   "Reversible, runs immediately (no approval).",
        .effect = Effect::create,
        .arguments = {required("name", "text that the name contains", Formats::needle),
            optional("list", "name of one list; without it all lists"),
            optional("complete", "false reopens (true)", Formats::onUnlessFalse)},
        .build = buildComplete,
    };
    return tool;
}

const Tool& reminderDelete()
{
    static const Tool tool{
        .id = "reminder.delete",
        .summary = "Delete reminder(s) whose name contains `name`, in [list=<name>] or all lists. Irreversible -> "
                   "approval.",
        .effect = Effect::destructive,
        .arguments = {required("name", "text that the name contains", Formats::needle),
            optional("list", "name of one list; without it all lists")},
        .build = buildDelete,
    };
    return tool;
}

const Tool& reminderDeleteList()
{
    static const Tool tool{
        .id = "reminder.deleteList",
        .summary = "Delete a Reminders list AND every reminder in it (name) - native EventKit, so it reaches "
                   "grouped/archived lists AppleScript can't. Deletes all lists sharing that exact title. "
                   "Irreversible -> approval.",
        .effect = Effect::destructive,
        .arguments = {required("name", "exact name of the list")},
        .build = Arguments::requiring({"name"}),
        .nativeRun = [](const Args& args) { return reminders().deleteList(Arguments::required(args, "name")); },
        .preview = previewDeleteList,
    };
    return tool;
}

const Tool& reminderClearCompleted()
{
    static const Tool tool{
        .id = "reminder.clearCompleted",
        .summary = "Delete COMPLETED reminders only, in [list=<name>] or across all lists - native EventKit (sees "
                   "grouped lists). Active reminders are NEVER touched. Irreversible -> approval.",
        .effect = Effect::destructive,
        .arguments = {optional("list", "name of one list; without it all lists")},
        .build = Arguments::acceptAll(),
        .nativeRun = [](const Args& args) { return reminders().clearCompleted(Arguments::optional(args, "list")); },
        .preview = previewClearCompleted,
    };
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
