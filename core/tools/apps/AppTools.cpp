#include "core/tools/apps/AppTools.h"

#include "core/foundation/Text.h"
#include "core/tools/Arguments.h"
#include "core/tools/MissingBridge.h"

#include <algorithm>
#include <array>

namespace mervo::Tools {

namespace {

Invocation buildQuit(const Args& args)
{
    static const std::vector<std::string> names{"Mail", "Contacts", "Calendar", "Notes", "Messages", "Reminders"};
    const std::string& wanted = Arguments::required(args, "name");
    const auto isWanted = [&](const std::string& name) { return Text::equalsIgnoringCase(name, wanted); };
    if (std::none_of(names.begin(), names.end(), isWanted)) {
        throw ToolError::badArg(
            "app.quit name must be one of: " + Text::join(names, ", ") + " - got \"" + wanted + "\"");
    }
    return {};
}

} // namespace

const Tool& finderReveal()
{
    static const Tool tool = withoutBridge("Finder",
        {
            .id = "finder.reveal",
            .summary = "Reveal a file/folder in Finder and bring it forward (path = POSIX path). Read-only (no file "
                       "change).",
            .effect = Effect::read,
            .arguments = {required("path", "path of the file or folder")},
            .build = Arguments::requiring({"path"}),
        });
    return tool;
}

const Tool& appQuit()
{
    static const Tool tool = withoutBridge("System Events",
        {
            .id = "app.quit",
            .summary = "Quit one of the harness apps when it's no longer needed (name = Mail | Contacts | Calendar | "
                       "Notes | Messages | Reminders, case-insensitive). Graceful quit - the app saves / prompts on "
                       "unsaved work; no-op if it isn't running. Reversible (it relaunches on next use). Use to leave "
                       "no app open after a batch, e.g. quit Mail after triage.",
            .effect = Effect::create,
            .arguments = {required("name", "Mail, Contacts, Calendar, Notes, Messages or Reminders",
                Formats::words("Mail|Contacts|Calendar|Notes|Messages|Reminders"))},
            .build = buildQuit,
        });
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
