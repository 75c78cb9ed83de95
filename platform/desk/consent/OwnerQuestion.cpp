#include "platform/desk/consent/OwnerQuestion.h"

#include "platform/desk/consent/TerminalQuestion.h"
#include "platform/process.h"
#include "platform/programs.h"
#include "platform/unified_log.h"

#include <cstdlib>
#include <fmt/format.h>

namespace mervo::desk {
namespace {

bool hasDisplay()
{
    for (const char* name : {"WAYLAND_DISPLAY", "DISPLAY"}) {
        const char* value = std::getenv(name);
        if (value != nullptr && *value != '\0')
            return true;
    }
    return false;
}

/// The program of the window writes "allow" or "refuse"; any other end is no answer.
Answer askInWindow(const std::string& sentence)
{
    const std::string program = platform::platformProgram("consent-question").string();
    try {
        const platform::Outcome outcome = platform::run({.program = program, .arguments = {sentence}});
        if (outcome.status == 0 && outcome.output == "allow\n")
            return Answer::allow;
        if (outcome.status == 0 && outcome.output == "refuse\n")
            return Answer::refuse;
        if (!outcome.stopped)
            platform::logError("Consent", fmt::format("the question was not answered: {}", outcome.error));
    } catch (const platform::NotStarted& error) {
        platform::logError("Consent", fmt::format("{}: {}", program, error.what()));
    }
    return Answer::nobody;
}

} // namespace

std::string questionFor(const std::string& scope)
{
    return fmt::format("Mervo asks to use {}: if you allow it, the agents that you have connected can read and change "
                       "what is there, within the rules that you set in Mervo.",
        scope == "calendar" || scope == "reminders"
            ? "your " + std::string(scope == "calendar" ? "calendars" : "reminders")
            : scopeName(scope));
}

Answer askOwner(const std::string& scope)
{
    const std::string sentence = questionFor(scope);
    const Answer answer = hasDisplay() ? askInWindow(sentence) : Answer::nobody;
    return answer == Answer::nobody ? askAtTerminal(sentence) : answer;
}

} // namespace mervo::desk
