#include "frontends/mcp/ToolCall.h"

#include "core/foundation/ConfigDir.h"
#include "core/policy/HarnessRunner.h"
#include "frontends/mcp/Log.h"
#include "frontends/mcp/Reply.h"

#include <exception>

namespace mervo::mcp {

namespace {

struct Answer {
    const ToolCall& call;
    const Notices& notices;

    std::string operator()(const HarnessRunner::Executed& executed) const
    {
        return Reply::toolResult(call.id, executed.output, call.era, notices);
    }

    std::string operator()(const HarnessRunner::Pending& pending) const
    {
        std::string text = "pending " + pending.id + ": waits for the owner's approval in the cockpit.";
        if (pending.preview)
            text += " Preview: " + *pending.preview;
        return Reply::toolResult(call.id, text, call.era, notices);
    }

    std::string operator()(const HarnessRunner::Error& error) const
    {
        return Reply::toolError(call.id, error.text, call.era, notices);
    }
};

} // namespace

std::string answer(const ToolCall& call)
{
    try {
        Notices notices;
        const HarnessRunner::Result result = HarnessRunner::run(
            *call.tool, call.args, call.actor, ConfigDir::url(), HarnessRunner::Stores::shared(), &notices);
        for (const std::string& warning : notices.warnings)
            logLine(call.tool->id + ": " + warning);
        return std::visit(Answer{call, notices}, result);
    } catch (const std::exception& failure) {
        return Reply::toolError(call.id, failure.what(), call.era);
    }
}

} // namespace mervo::mcp
