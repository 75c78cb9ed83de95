#include "core/automations/supervisor/FailureMail.h"

#include "core/automations/engine/RondelEngine.h"
#include "core/automations/launch/RunEnvironment.h"
#include "core/foundation/Text.h"
#include "platform/attended.h"
#include "platform/files.h"
#include "platform/programs.h"
#include "platform/streams.h"
#include "platform/unicode.h"

#include <algorithm>
#include <fmt/format.h>

namespace mervo::FailureMail {

namespace {

constexpr std::size_t kLines = 40;
constexpr std::size_t kMostBytes = 256 * 1024; // of a log that need not have lines at all
constexpr std::chrono::milliseconds kMercy(1000);

/// As a text that a mail can hold.
std::string tail(const std::filesystem::path& log)
{
    std::string bytes = platform::readEnd(log, kMostBytes).value_or("");
    std::erase(bytes, '\0');
    std::vector<std::string> lines = Text::split(platform::withValidUtf8(bytes), '\n');
    if (lines.size() > kLines)
        lines.erase(lines.begin(), lines.end() - static_cast<std::ptrdiff_t>(kLines));
    return Text::join(lines, "\n");
}

std::string program()
{
    const std::string own = platform::ownExecutable().string();
    return own.empty() ? RondelEngine::mervoBinaryForLaunchd().string() : own;
}

} // namespace

void send(const RunContext& run, int code)
{
    const auto body = run.paths.failureTail();
    platform::replaceFile(body,
        fmt::format("The script loop \"{}\" failed (exit {}).\n\nLast lines of the log:\n\n{}\n", run.name, code,
            tail(run.log.file())),
        platform::Keep::whileRunning);
    try {
        platform::runAttended(
            {.program = program(),
                .arguments = {"run", "mail.notify", fmt::format("subject=[rondel] {} failed (exit {})", run.name, code),
                    "body-file=" + body.string()},
                .environment = RunEnvironment::ofHelpers()},
            {}, run.request, kMercy);
    } catch (const platform::NotStarted&) { // the log and the state tell
    }
}

} // namespace mervo::FailureMail
