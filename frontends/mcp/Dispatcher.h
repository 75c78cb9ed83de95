#pragma once

#include "frontends/mcp/CallPool.h"
#include "frontends/mcp/Message.h"
#include "frontends/mcp/ToolCall.h"
#include "frontends/mcp/ToolNames.h"
#include "frontends/mcp/ToolPublisher.h"

#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace mervo::mcp {

/// One client's conversation: takes its lines, answers at once what needs no tool, and hands the calls on.
///
/// For one thread. Knows nothing of files and threads: all output goes through the outlets.
class Dispatcher {
public:
    struct Outlets {
        std::function<void(std::string)> send; ///< a line with its line feed
        std::function<CallPool::Submission(ToolCall)> submit;
        std::function<bool(std::string_view id)> cancel; ///< true when a call with this id was under way
    };

    /// Without a naming, the client's name decides. `instructions` is for the model, at the start of a session.
    Dispatcher(std::optional<Naming> naming, std::string_view instructions, Outlets outlets);

    void handleLine(std::string_view line);
    void handleTooLongLine();

private:
    void handle(Request request);
    void handle(const Notification& notification);
    void handle(const Response&) { }
    void handle(const Malformed& malformed);

    void initialize(const Request& request);
    void discover(const Request& request);
    void listTools(const Request& request, Era era);
    void callTool(Request request, Era era);
    void answerSubmission(CallPool::Submission submission, const RequestId& id);

    void refuse(const RequestId& id, int code, std::string_view text, std::string_view data = {});
    /// The name that the client gives itself: with the request, else at the start of the session.
    std::string clientName(const json::Value& params) const;
    Naming naming(const json::Value& params) const;

    const std::optional<Naming> naming_;
    const std::string instructions_; ///< as JSON
    const Outlets outlets_;
    ToolPublisher publisher_;
    std::optional<std::string> sessionClient_; ///< set by `initialize`
};

} // namespace mervo::mcp
