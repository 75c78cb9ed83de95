#include "core/automations/supervisor/RondelRunner.h"
#include "core/foundation/ServiceError.h"
#include "frontends/cli/Commands.h"
#include "platform/ascii.h"
#include "platform/files.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdlib>
#include <filesystem>
#include <fmt/format.h>

namespace mervo::cli {

namespace {

namespace fs = std::filesystem;

constexpr Option kForce{"--force", "run it although it is paused"};
constexpr std::array kRunOptions{kForce};

constexpr std::string_view kRunHelp =
    R"(Runs an automation once and waits for its end: its job is this command. What happens stands in the log
(~/mervo/.runtime/logs/<name>.log) and in the state that "mervo run auto.list" shows.

One that is paused is skipped, unless --force is given; one that runs already is skipped in any case. Ctrl-C, SIGTERM
and SIGHUP end the run and what it has started. Exit status: 0 whenever it came to a decision, also for a run that was
skipped or failed; 1 when there is no such automation, or nothing in it to run.

Examples:
  mervo auto-run morning
  mervo auto-run morning --force
)";

constexpr std::string_view kDoneHelp =
    R"(Tells the supervisor of a run that the agent is done; it then closes the session. The code is the exit code of the run:
0, which is also what no code means, for success, another number for a failure. For agents that run as an automation:
anywhere else there is no run to end (RONDEL_DONE is not set), and the command fails.

Examples:
  mervo auto-done
  mervo auto-done 1
)";

ExitCode autoRun(const Arguments& arguments, Io&)
{
    if (arguments.words.empty())
        throw UsageError("no automation was named");
    return RondelRunner::runOnce(arguments.words.front(), arguments.has(kForce)) == 0 ? ExitCode::done
                                                                                      : ExitCode::failed;
}

/// Digits that 32 bits hold; the supervisor reads nothing else of them.
std::string codeOf(const Arguments& arguments)
{
    const std::string code = arguments.words.empty() ? "0" : arguments.words.front();
    std::int32_t value = 0;
    if (!std::ranges::all_of(code, platform::ascii::isDigit)
        || std::from_chars(code.data(), code.data() + code.size(), value).ec != std::errc())
        throw UsageError(fmt::format("\"{}\" is no exit code, which is a number from 0 on", code));
    return code;
}

ExitCode autoDone(const Arguments& arguments, Io&)
{
    const std::string code = codeOf(arguments);
    const char* const named = std::getenv("RONDEL_DONE");
    if (named == nullptr || *named == '\0')
        throw ServiceError("there is no run to end: RONDEL_DONE is not set");
    const fs::path file = named;
    std::error_code unknown;
    const auto kind = fs::status(file, unknown).type();
    // In one step: the supervisor may look at any moment. What is no file would be replaced by one.
    const auto error = kind != fs::file_type::regular && kind != fs::file_type::not_found
        ? std::make_error_code(std::errc::not_supported)
        : platform::replaceFile(file, code, platform::Keep::whileRunning);
    if (error)
        throw ServiceError(fmt::format("the run could not be ended: \"{}\": {}", file.string(), error.message()));
    return ExitCode::done;
}

} // namespace

constinit const Command kAutoRun{
    "auto-run", "<name> [--force]", "run an automation once", kRunHelp, kRunOptions, 1, autoRun};

constinit const Command kAutoDone{
    "auto-done", "[code]", "end the run of an automation, from inside", kDoneHelp, {}, 1, autoDone};

} // namespace mervo::cli
