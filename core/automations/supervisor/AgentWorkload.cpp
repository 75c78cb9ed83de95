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

std::string feedback(const RunContext& run)
{
    const StoreFailures::Scope failures;
    std::string block = AskService::shared().injectionBlock(run.name);
    for (const std::string& sentence : failures.sentences())
        run.log.stamped("without feedback: " + Text::visibleLine(sentence));
    return block;
}

/// What is not written is not there either: an agent must not get the prompt of an earlier run.
void writePrompt(const RunContext& run)
{
    const auto file = run.paths.prompt();
    const std::string text = PromptFile::text(feedback(run), instructions(run));
    if (const auto error = platform::replaceFile(file, text, platform::Keep::whileRunning)) {
        run.log.stamped("the prompt could not be written: " + error.message());
        std::error_code ignored;
        std::filesystem::remove(file, ignored);
    }
}

} // namespace

void runAgent(const RunContext& run)
{
    writePrompt(run);
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
        .searchPath = run.searchPath};
    Launch::run(agent, run.request, run.log, run.record);
}

} // namespace mervo
