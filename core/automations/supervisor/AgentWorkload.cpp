#include "core/automations/launch/AgentCommand.h"
#include "core/automations/launch/Launch.h"
#include "core/automations/supervisor/PromptFile.h"
#include "core/automations/supervisor/Workload.h"
#include "core/feedback/AskService.h"
#include "core/foundation/StoreFailures.h"
#include "core/foundation/Text.h"
#include "platform/files.h"

#include <filesystem>
#include <fmt/format.h>

namespace mervo {

namespace {

std::string instructions(const RunContext& run)
{
    std::error_code why;
    auto text = platform::readFile(run.paths.instructions(), platform::kLongestFile, &why);
    if (!text && why != std::errc::no_such_file_or_directory)
        run.log.stamped("AGENT.md could not be read: " + why.message());
    return text ? *std::move(text) : run.settings.prompt;
}

AskService::Injection feedback(const RunContext& run)
{
    const StoreFailures::Scope failures;
    AskService::Injection injection = AskService::shared().injectionBlock(run.name);
    for (const std::string& sentence : failures.sentences())
        run.log.stamped("without feedback: " + Text::visibleLine(sentence));
    return injection;
}

void noteAsTold(const RunContext& run, const AskService::Injection& injection)
{
    const StoreFailures::Scope failures;
    AskService::shared().markInjected(injection);
    for (const std::string& sentence : failures.sentences())
        run.log.stamped("the next run is told the same answers: " + Text::visibleLine(sentence));
}

/// Gives what the prompt tells of the owner. What is not written is not there either: an agent must not get the prompt
/// of an earlier run.
AskService::Injection writePrompt(const RunContext& run)
{
    const auto file = run.paths.prompt();
    AskService::Injection injection = feedback(run);
    const std::string text = PromptFile::text(injection.block, instructions(run));
    const auto error = platform::replaceFile(file, text, platform::Keep::whileRunning);
    if (!error)
        return injection;
    run.log.stamped("the prompt could not be written: " + error.message());
    std::error_code ignored;
    std::filesystem::remove(file, ignored);
    return {};
}

} // namespace

void runAgent(const RunContext& run)
{
    const AskService::Injection injection = writePrompt(run);
    const RunSettings& settings = run.settings;
    const AgentRun agent{.name = run.name,
        .client = settings.client,
        .arguments = agentCommand({.client = settings.client,
            .model = settings.model,
            .effort = settings.effort,
            .cwd = settings.cwd,
            .timeout = settings.timeout,
            .dangerous = settings.dangerous}),
        .cwd = settings.cwd,
        .timeout = settings.timeout,
        .visible = settings.visible,
        .screen = settings.screen,
        .home = run.home,
        .searchPath = run.searchPath,
        .started = [&] { noteAsTold(run, injection); }};
    Launch::run(agent, run.request, run.log, run.record);
}

} // namespace mervo
