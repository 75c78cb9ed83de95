#include "core/automations/supervisor/PromptFile.h"

namespace mervo::PromptFile {

namespace {

constexpr std::string_view kCompletionContract =
    "When the task above is complete, signal it by running `mervo auto-done` (equivalent: printf 0 > "
    "\"$RONDEL_DONE\"). "
    "On partial failure, run `mervo auto-done 1`. Do NOT kill any process, do not close the window yourself, and do "
    "not "
    "sit waiting at the prompt: the rondel supervisor sees the signal and closes the session from the outside.";

} // namespace

std::string text(std::string_view feedback, std::string_view instructions)
{
    std::string text(feedback);
    if (!feedback.empty())
        text += "\n\n";
    text += instructions;
    text += "\n\n";
    text += kCompletionContract;
    return text + "\n";
}

} // namespace mervo::PromptFile
