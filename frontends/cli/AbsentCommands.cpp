#include "core/foundation/ServiceError.h"
#include "frontends/cli/Commands.h"

#include <array>
#include <fmt/format.h>

/// Commands of the interface whose engines are not part of this build. They read their words as ever, so that wrong
/// usage is still told from a missing engine, and then say what is missing.
namespace mervo::cli {

namespace {

constexpr Option kForce{"--force", "run it although it is paused or not due"};
constexpr std::array kRunOptions{kForce};

[[noreturn]] void refuse(std::string_view command, std::string_view needed)
{
    throw ServiceError(fmt::format("mervo {} needs {}, which this build does not have", command, needed));
}

ExitCode autoRun(const Arguments& arguments, Io&)
{
    if (arguments.words.empty())
        throw UsageError("no automation was named");
    refuse("auto-run", "the automation engine");
}

ExitCode autoDone(const Arguments&, Io&)
{
    refuse("auto-done", "the automation engine");
}

} // namespace

constinit const Command kAutoRun{"auto-run", "<name> [--force]", "run an automation once (not in this build)",
    "Runs an automation once. This build has no automation engine, and the command says so.\n", kRunOptions, 1,
    autoRun};

constinit const Command kAutoDone{"auto-done", "[code]", "end the run of an automation (not in this build)",
    "Tells the supervisor of a run that the agent is done. This build has no automation engine, and the command says "
    "so.\n",
    {}, 1, autoDone};

} // namespace mervo::cli
