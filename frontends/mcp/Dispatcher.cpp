#include "frontends/mcp/Dispatcher.h"

#include "core/catalogue/Catalogue.h"
#include "core/policy/ActorName.h"
#include "frontends/mcp/ArgumentReader.h"
#include "frontends/mcp/Log.h"
#include "frontends/mcp/Protocol.h"
#include "frontends/mcp/Reply.h"

#include <utility>

namespace mervo::mcp {

using Kind = json::Value::Kind;

namespace {

constexpr std::string_view kCapabilities = R"({"tools":{}})";

std::string unknownTool(std::string_view name, Naming naming)
{
    const std::string shown(Reply::echo(name));
    std::string text = "Unknown tool: " + shown;
    std::string closest;
    for (const std::string& id : Tools::closest(shown))
        closest += (closest.empty() ? "" : ", ") + ToolNames::published(id, naming);
    return closest.empty() ? text : text + " (closest: " + closest + ")";
}

} // namespace

Dispatcher::Dispatcher(std::optional<Naming> naming, std::string_view instructions, Outlets outlets)
    : naming_(naming)
    , instructions_(json::quoted(instructions))
    , outlets_(std::move(outlets))
{
}

void Dispatcher::handleLine(std::string_view line)
{
    std::visit([this](auto&& message) { handle(std::forward<decltype(message)>(message)); }, readMessage(line));
}

void Dispatcher::handleTooLongLine()
{
    handle(Malformed{{}, ErrorCode::kInvalidRequest, "Invalid request: the line is longer than 100 MiB."});
}

void Dispatcher::handle(const Malformed& malformed)
{
    logLine(malformed.text);
    refuse(malformed.id, malformed.code, malformed.text);
}

void Dispatcher::handle(const Notification& notification)
{
    if (notification.method == "notifications/cancelled") {
        const RequestId id = idOf(notification.params["requestId"]);
        if (!id.empty() && outlets_.cancel(id))
            logLine("the client cancelled call " + id);
    }
}

void Dispatcher::handle(Request request)
{
    if (request.method == "initialize") {
        initialize(request);
        return;
    }
    const json::Value& version = Protocol::statedVersion(request.params);
    const Era era = version.is(Kind::absent) ? Era::session : Era::stateless;
    if (era == Era::stateless && !version.is(Kind::text)) {
        refuse(request.id, ErrorCode::kInvalidParams,
            "Invalid params: the protocol version under \"_meta\" is not a string.", Protocol::versionData(version));
    } else if (era == Era::stateless && !Protocol::isSupported(version.text)) {
        refuse(request.id, ErrorCode::kUnsupportedVersion, "Unsupported protocol version.",
            Protocol::versionData(version));
    } else if (request.method == "ping") {
        outlets_.send(Reply::emptyResult(request.id, era));
    } else if (request.method == "server/discover") {
        discover(request);
    } else if (request.method != "tools/list" && request.method != "tools/call") {
        refuse(request.id, ErrorCode::kMethodNotFound, "Method not found: " + std::string(Reply::echo(request.method)));
    } else if (era == Era::session && !sessionClient_) {
        refuse(request.id, ErrorCode::kInvalidRequest,
            "Invalid request: the session is not initialized; send \"initialize\" first, or name the protocol version "
            "under \"_meta\".");
    } else if (request.method == "tools/list") {
        listTools(request, era);
    } else {
        callTool(std::move(request), era);
    }
}

void Dispatcher::initialize(const Request& request)
{
    const json::Value& version = request.params["protocolVersion"];
    if (!version.is(Kind::text)) {
        refuse(request.id, ErrorCode::kInvalidParams, "Invalid params: \"protocolVersion\" is not a string.",
            Protocol::versionData(version));
        return;
    }
    sessionClient_ = request.params["clientInfo"]["name"].text;
    std::string result = R"({"protocolVersion":")";
    result.append(Protocol::negotiate(version.text));
    result.append(R"(","capabilities":)").append(kCapabilities);
    result.append(R"(,"serverInfo":)").append(Protocol::identity());
    result.append(R"(,"instructions":)").append(instructions_).append("}");
    outlets_.send(Reply::result(request.id, result));
}

void Dispatcher::discover(const Request& request)
{
    std::string result = "{";
    result.append(Protocol::resultOpening(Era::stateless)).append(Protocol::kCacheHints);
    result.append(R"("supportedVersions":)").append(Protocol::kSupportedList);
    result.append(R"(,"capabilities":)").append(kCapabilities);
    result.append(R"(,"instructions":)").append(instructions_).append("}");
    outlets_.send(Reply::result(request.id, result));
}

void Dispatcher::listTools(const Request& request, Era era)
{
    // The list is one page, so every cursor is one that we never gave out.
    const json::Value& cursor = request.params["cursor"];
    if (!cursor.missing()) {
        refuse(request.id, ErrorCode::kInvalidParams, "Invalid params: unknown cursor; the list is one page.");
        return;
    }
    outlets_.send(Reply::result(request.id, publisher_.list(naming(request.params), era)));
}

void Dispatcher::callTool(Request request, Era era)
{
    const json::Value& name = request.params["name"];
    if (!name.is(Kind::text)) {
        refuse(request.id, ErrorCode::kInvalidParams, "Invalid params: \"name\" is not a string.");
        return;
    }
    const Tool* tool = ToolNames::find(name.text);
    if (tool == nullptr) {
        refuse(request.id, ErrorCode::kInvalidParams, unknownTool(name.text, naming(request.params)));
        return;
    }
    std::string actor = actorName("mcp", clientName(request.params));
    json::Value given = request.params.take("arguments");
    if (!given.missing() && !given.is(Kind::object)) {
        refuse(request.id, ErrorCode::kInvalidParams, "Invalid params: \"arguments\" is not an object.");
        return;
    }
    auto arguments = ArgumentReader::read(given);
    if (const auto* refusal = std::get_if<ArgumentReader::Refusal>(&arguments)) {
        outlets_.send(Reply::toolError(request.id, refusal->text, era));
        return;
    }
    answerSubmission(
        outlets_.submit({request.id, tool, std::get<Args>(std::move(arguments)), std::move(actor), era}), request.id);
}

void Dispatcher::answerSubmission(CallPool::Submission submission, const RequestId& id)
{
    switch (submission) {
    case CallPool::Submission::accepted:
        return;
    case CallPool::Submission::duplicate:
        refuse(id, ErrorCode::kInvalidRequest, "Invalid request: a call with this id is still under way.");
        return;
    case CallPool::Submission::full:
        refuse(
            id, ErrorCode::kTooManyCalls, "Too many calls wait already; send this one again when some are answered.");
        return;
    }
}

void Dispatcher::refuse(const RequestId& id, int code, std::string_view text, std::string_view data)
{
    outlets_.send(Reply::error(id, code, text, data));
}

std::string Dispatcher::clientName(const json::Value& params) const
{
    const json::Value& stated = params["_meta"]["io.modelcontextprotocol/clientInfo"]["name"];
    return stated.is(Kind::text) ? stated.text : sessionClient_.value_or("");
}

Naming Dispatcher::naming(const json::Value& params) const
{
    return naming_ ? *naming_ : ToolNames::forClient(clientName(params));
}

} // namespace mervo::mcp
