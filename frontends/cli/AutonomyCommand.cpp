#include "core/foundation/HarnessConfig.h"
#include "core/foundation/ServiceError.h"
#include "core/foundation/Text.h"
#include "core/policy/AutonomyRequest.h"
#include "frontends/cli/Call.h"
#include "frontends/cli/Commands.h"

#include <fmt/format.h>

namespace mervo::cli {

namespace {

constexpr std::string_view kHelp =
    R"(Prints the autonomy level: panic, copilote or yolo. With a level: lowers it to that one. Raising it is for a person alone,
in the cockpit, and is refused here.

  panic     every change waits for approval; only reads run
  copilote  creations run; destructive actions wait
  yolo      everything runs at once

Examples:
  mervo autonomy
  mervo autonomy panic
)";

AutonomyMode current()
{
    return HarnessConfig::load().autonomyMode;
}

void lower(AutonomyMode wanted, Io& io)
{
    Notices notices;
    const auto change = AutonomyRequest::make(wanted, actor(), AuditLog::shared(), &notices);
    for (const std::string& warning : notices.warnings)
        io.err("warning: " + Text::visibleLine(warning) + "\n");
    if (change == HarnessConfig::AutonomyChange::refusedHumanOnly) {
        throw ServiceError(fmt::format("only a person can raise autonomy to {}, in the cockpit; it stays at {}",
            rawValue(wanted), rawValue(current())));
    }
}

ExitCode run(const Arguments& arguments, Io& io)
{
    if (!arguments.words.empty()) {
        const std::string& word = arguments.words.front();
        const auto wanted = autonomyMode(word);
        if (!wanted)
            throw UsageError(fmt::format("\"{}\" is no level of autonomy; there are panic, copilote and yolo", word));
        lower(*wanted, io);
    }
    if (const std::string complaint = HarnessConfig::complaint(); !complaint.empty())
        io.err("warning: " + Text::visibleLine(complaint) + "; \"mervo doctor\" says more\n");
    io.out(fmt::format("{}\n", rawValue(current())));
    return ExitCode::done;
}

} // namespace

constinit const Command kAutonomy{
    "autonomy", "[panic|copilote|yolo]", "show the autonomy level, or lower it", kHelp, {}, 1, run};

} // namespace mervo::cli
