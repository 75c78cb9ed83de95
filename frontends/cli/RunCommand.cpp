#include "core/foundation/ConfigDir.h"
#include "core/foundation/Text.h"
#include "core/policy/HarnessRunner.h"
#include "frontends/cli/Call.h"
#include "frontends/cli/Commands.h"
#include "frontends/cli/HeldSignals.h"
#include "frontends/cli/Json.h"

#include <array>
#include <nlohmann/json.hpp>

namespace mervo::cli {

namespace {

constexpr std::array kOptions{kJson};

constexpr std::string_view kHelp =
    R"(Calls one tool through the gate. The gate runs it at once, lets it wait for the owner, or refuses it.

Each key=value word is one argument. It is split at the first "=", and the value is taken as it stands. A word "--" ends
the options. body-file=<path> gives the text of a file as the argument body; "-" stands for standard input.

Prints the tool's text, or "pending", the id of the waiting action and, on a second line, what it would do. With --json
one object with "outcome" executed, pending or error. Exit status: 0 executed or pending, 1 failed or refused, 2 wrong
usage, in which case nothing has run. Ctrl-C, SIGTERM and SIGHUP wait until the call is on record, then end the program;
a second Ctrl-C ends the tool itself.

Notes on standard error, "remarks" in the object, name arguments that have no effect or an unlikely one, and what the
answer leaves out.

Examples:
  mervo run how_it_works
  mervo run mail.search from=ada@example.org subjectContains=minutes limit=10
  mervo run mail.draft to=ada@example.org subject=Minutes body-file=minutes.txt
  make report | mervo run mail.notify subject=Report body-file=-
)";

void printJson(const HarnessRunner::Result& result, const Notices& notices, Io& io)
{
    nlohmann::ordered_json object;
    if (const auto* executed = std::get_if<HarnessRunner::Executed>(&result)) {
        object["outcome"] = "executed";
        object["output"] = executed->output;
    } else if (const auto* pending = std::get_if<HarnessRunner::Pending>(&result)) {
        object["outcome"] = "pending";
        object["id"] = pending->id;
        if (pending->preview)
            object["preview"] = *pending->preview;
    } else {
        object["outcome"] = "error";
        object["error"] = std::get<HarnessRunner::Error>(result).text;
    }
    if (!notices.remarks.empty())
        object["remarks"] = notices.remarks;
    if (!notices.warnings.empty())
        object["warnings"] = notices.warnings;
    io.out(jsonLine(object));
}

void printText(const HarnessRunner::Result& result, Io& io)
{
    if (const auto* executed = std::get_if<HarnessRunner::Executed>(&result)) {
        std::string text = io.terminal ? Text::visible(executed->output) : executed->output;
        if (!text.ends_with('\n'))
            text += '\n';
        io.out(text);
    } else if (const auto* pending = std::get_if<HarnessRunner::Pending>(&result)) {
        std::string text = "pending " + pending->id + "\n";
        if (pending->preview)
            text += Text::visibleLine(*pending->preview) + "\n";
        io.out(text);
    } else {
        io.err("error: " + Text::visible(std::get<HarnessRunner::Error>(result).text) + "\n");
    }
}

/// Standard error, so that the answer on standard output stays the tool's own text.
void printNotices(const Notices& notices, Io& io)
{
    for (const std::string& remark : notices.remarks)
        io.err("note: " + Text::visibleLine(remark) + "\n");
    for (const std::string& warning : notices.warnings)
        io.err("warning: " + Text::visibleLine(warning) + "\n");
}

ExitCode runTool(const Arguments& arguments, Io& io)
{
    const Call call = readCall(arguments, io);
    Notices notices;
    HeldSignals signals;
    const HarnessRunner::Result result =
        HarnessRunner::run(*call.tool, call.args, actor(), ConfigDir::url(), HarnessRunner::Stores::shared(), &notices);
    signals.letGo();
    printNotices(notices, io);
    if (arguments.has(kJson)) {
        printJson(result, notices, io);
    } else {
        printText(result, io);
    }
    return std::holds_alternative<HarnessRunner::Error>(result) ? ExitCode::failed : ExitCode::done;
}

/// With --json also a call that never reached the gate is answered by an object; the sentence for people goes to
/// standard error as without it.
ExitCode run(const Arguments& arguments, Io& io)
{
    try {
        return runTool(arguments, io);
    } catch (const OutputFailed&) {
        throw;
    } catch (const std::exception& error) {
        if (arguments.has(kJson))
            printJson(HarnessRunner::Error{error.what()}, {}, io);
        throw;
    }
}

} // namespace

constinit const Command kRun{
    "run", "<tool> [key=value ...] [--json]", "call one tool through the gate", kHelp, kOptions, kAnyNumber, run};

} // namespace mervo::cli
