#include "core/automations/model/AutomationDraft.h"

#include "core/foundation/Text.h"
#include "platform/programs.h"

namespace mervo {

namespace {

constexpr std::string_view kProgram = "mervo";

/// What stands behind " run "; the folder of the program may hold these letters too, so it is passed over.
std::string_view behindRun(std::string_view command)
{
    for (const std::string_view mark : {"mervo' run ", " run "}) {
        if (const auto at = command.find(mark); at != std::string_view::npos)
            return command.substr(at + mark.size());
    }
    return command;
}

} // namespace

std::string AutomationDraft::toolCommand(std::string_view tool, std::string_view args)
{
    const std::string_view words = Text::trimmed(args);
    std::string command = Text::shellQuoted(mervoBinary().string()) + " run " + std::string(tool);
    return words.empty() ? command : command + " " + std::string(words);
}

ToolCall ToolCall::ofCommand(std::string_view command)
{
    const std::string_view call = Text::trimmed(behindRun(command));
    const auto blank = std::min(call.find(' '), call.size());
    return {std::string(call.substr(0, blank)), std::string(Text::trimmed(call.substr(blank)))};
}

std::filesystem::path mervoBinary()
{
    const std::filesystem::path own = platform::ownExecutable();
    return own.filename() == kProgram && platform::canRun(own) ? own : platform::helper(kProgram);
}

} // namespace mervo
