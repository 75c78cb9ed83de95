#include "core/tools/apps/AppTools.h"

#include "core/foundation/Text.h"
#include "core/tools/Arguments.h"

#include <algorithm>
#include <array>

namespace mervo::Tools {

namespace {

constexpr auto kReveal = R"AS(on run argv
	set thePath to item 1 of argv
	set theItem to POSIX file thePath
	tell application "Finder"
		reveal theItem
		activate
	end tell
	return "OK revealed " & thePath
end run
)AS";

constexpr auto kQuit = R"AS(on run argv
	set appName to item 1 of argv
	tell application "System Events" to set isUp to (exists process appName)
	if not isUp then return "(not running: " & appName & ")"
	tell application appName to quit
	return "OK quit: " & appName
end run
)AS";

Invocation buildReveal(const Args& args)
{
    return {kReveal, {Arguments::required(args, "path")}};
}

Invocation buildQuit(const Args& args)
{
    static const std::vector<std::string> names{"Mail", "Contacts", "Calendar", "Notes", "Messages", "Reminders"};
    const std::string& wanted = Arguments::required(args, "name");
    const auto isWanted = [&](const std::string& name) { return Text::equalsIgnoringCase(name, wanted); };
    const auto found = std::find_if(names.begin(), names.end(), isWanted);
    if (found == names.end()) {
        throw ToolError::badArg(
            "app.quit name must be one of: " + Text::join(names, ", ") + " - got \"" + wanted + "\"");
    }
    return {kQuit, {*found}};
}

} // namespace

const Tool& finderReveal()
{
    static const Tool tool{
        .id = "finder.reveal",
        .summary = "Reveal a file/folder in Finder and bring it forward (path = POSIX path). Read-only (no file "
                   "change).",
        .effect = Effect::read,
        .arguments = {required("path", "path of the file or folder")},
        .build = buildReveal,
    };
    return tool;
}

const Tool& appQuit()
{
    static const Tool tool{
        .id = "app.quit",
        .summary = "Quit one of the harness apps when it's no longer needed (name = Mail | Contacts | Calendar | "
                   "Notes | Messages | Reminders, case-insensitive). Graceful quit - the app saves / prompts on "
                   "unsaved work; no-op if it isn't running. Reversible (it relaunches on next use). Use to leave "
                   "no app open after a batch, e.g. quit Mail after triage.",
        .effect = Effect::create,
        .arguments = {required("name", "Mail, Contacts, Calendar, Notes, Messages or Reminders",
            Formats::words("Mail|Contacts|Calendar|Notes|Messages|Reminders"))},
        .build = buildQuit,
    };
    return tool;
}

} // namespace mervo::Tools

namespace mervo::AppTools {

std::span<const Tool* const> all()
{
    static const std::array tools{&Tools::finderReveal(), &Tools::appQuit()};
    return tools;
}

} // namespace mervo::AppTools
