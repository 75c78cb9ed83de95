#include "core/automations/launch/DirectRun.h"

#include "core/automations/launch/AgentCommand.h"
#include "core/automations/launch/RunEnvironment.h"
#include "platform/attended.h"
#include "platform/files.h"
#include "platform/streams.h"

#include <algorithm>
#include <fmt/format.h>

namespace mervo::DirectRun {

namespace {

constexpr std::chrono::milliseconds kMercy(3000); // whoever asks for the end waits a little longer

/// The program that finds the client along the run's PATH.
constexpr const char* kFinder = "/usr/bin/env";

} // namespace

int attend(const platform::Command& command, const std::filesystem::path& input, platform::EndRequest& request,
    const RunLog& log)
try {
    const platform::Streams streams{
        input.empty() ? platform::Descriptor() : platform::openToRead(input), platform::openToAppend(log.file())};
    const auto outcome = platform::runAttended(command, streams, request, kMercy);
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
    std::filesystem::path input = run.paths.prompt();
    if (const auto place = std::ranges::find(command.arguments, kPromptPlaceholder); place != command.arguments.end()) {
        *place = platform::readFile(input).value_or("");
        input.clear();
    }
    const int code = attend(command, input, request, log);
    log.end(run.name, code);
    record(code);
}

} // namespace mervo::DirectRun
