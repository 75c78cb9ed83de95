#include "core/automations/launch/DirectRun.h"

#include "core/automations/launch/AgentCommand.h"
#include "core/automations/launch/RunEnvironment.h"
#include "platform/attended.h"
#include "platform/files.h"
#include "platform/process.h"
#include "platform/streams.h"

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <fmt/format.h>
#include <optional>

namespace mervo::DirectRun {

namespace {

namespace fs = std::filesystem;

constexpr std::chrono::milliseconds kMercy(3000); // whoever asks for the end waits a little longer

/// The program that finds the client along the run's PATH.
constexpr const char* kFinder = "/usr/bin/env";

constexpr std::size_t kLongestNumber = 20;

/// The session whose leader has died, if that was since the system's start: numbers begin anew with that.
std::optional<std::int64_t> leftSession(const fs::path& file)
{
    const std::string text = platform::readFile(file, kLongestNumber).value_or("");
    std::int64_t session = 0;
    std::from_chars(text.data(), text.data() + text.size(), session);
    const auto leader = platform::processFacts(session), first = platform::processFacts(1);
    std::error_code unknown;
    const auto age = fs::file_time_type::clock::now() - fs::last_write_time(file, unknown);
    if (session <= 1 || (leader && !leader->isEnding) || unknown || !first || age > first->age)
        return std::nullopt;
    return session;
}

} // namespace

int attend(const platform::Command& command, const fs::path& input, const RunPaths& paths,
    platform::EndRequest& request, const RunLog& log, const std::function<void()>& started)
try {
    const platform::Streams streams{
        input.empty() ? platform::Descriptor() : platform::openToRead(input), platform::openToAppend(log.file())};
    const auto outcome = platform::runAttended(command, streams, request, kMercy, [&](std::int64_t session) {
        platform::replaceFile(paths.session(), std::to_string(session), platform::Keep::whileRunning);
        started();
    });
    std::error_code ignored;
    fs::remove(paths.session(), ignored);
    if (outcome.stopped) {
        log.stamped(fmt::format("asked to end (signal {})", request.signal()));
        return RunExit::kBySignal + request.signal();
    }
    return outcome.signal != 0 ? RunExit::kBySignal + outcome.signal : outcome.status;
} catch (const platform::NotStarted& failure) {
    log.stamped(fmt::format("not started: {}", failure.what()));
    return RunExit::kNotStarted;
}

void run(const AgentRun& run, platform::EndRequest& request, const RunLog& log, const RecordExit& record)
{
    log.line(fmt::format("===== rondel: {} @ {} (background, client={}) =====", run.name, RunLog::now(), run.client));
    platform::Command command{
        .program = kFinder, .arguments = run.arguments, .folder = run.cwd, .environment = RunEnvironment::ofAgent(run)};
    fs::path input = run.paths.prompt();
    if (const auto place = std::ranges::find(command.arguments, kPromptPlaceholder); place != command.arguments.end()) {
        *place = platform::readFile(input).value_or("");
        input.clear();
    }
    const int code = attend(command, input, run.paths, request, log, run.started);
    log.end(run.name, code);
    record(code);
}

void endLeftover(const RunPaths& paths, const RunLog& log)
{
    const auto session = leftSession(paths.session());
    if (session && platform::endSession(*session, kMercy))
        log.stamped("ended the processes that the run before had left");
    std::error_code ignored;
    fs::remove(paths.session(), ignored);
}

} // namespace mervo::DirectRun
