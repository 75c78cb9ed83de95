#include "frontends/mcp/Message.h"

#include <utility>

namespace mervo::mcp {

using Kind = json::Value::Kind;

RequestId idOf(const json::Value& value)
{
    if (value.is(Kind::integer))
        return value.text;
    return value.is(Kind::text) ? json::quoted(value.text) : RequestId{};
}

namespace {

Message refused(const RequestId& id, std::string text)
{
    return Malformed{id, ErrorCode::kInvalidRequest, "Invalid request: " + std::move(text)};
}

} // namespace

Message readMessage(std::string_view line)
{
    json::Value message;
    const json::Outcome outcome = json::parse(line, message);
    if (outcome == json::Outcome::malformed)
        return Malformed{{}, ErrorCode::kParse, "Parse error: the line is not JSON in UTF-8."};
    if (message.is(Kind::list))
        return refused({}, "batches are not supported; send one message a line.");
    if (!message.is(Kind::object))
        return refused({}, "a message is a JSON object.");

    const json::Value& id = message["id"];
    const RequestId idText = idOf(id);
    if (outcome == json::Outcome::crowded)
        return refused(idText, "an object of the message has more than 1024 members.");
    const json::Value& version = message["jsonrpc"];
    if (!version.is(Kind::text) || version.text != "2.0")
        return refused(idText, "\"jsonrpc\" is not \"2.0\".");
    const json::Value& method = message["method"];
    if (method.is(Kind::absent) && (!message["result"].is(Kind::absent) || !message["error"].is(Kind::absent)))
        return Response{};
    if (!method.is(Kind::text))
        return refused(idText, "\"method\" is not a string.");
    if (!id.is(Kind::absent) && idText.empty())
        return refused({}, "\"id\" is not a string or an integer.");
    json::Value params = message.take("params");
    if (id.is(Kind::absent))
        return Notification{method.text, std::move(params)};
    if (!params.missing() && !params.is(Kind::object))
        return Malformed{idText, ErrorCode::kInvalidParams, "Invalid params: \"params\" is not an object."};
    return Request{idText, method.text, std::move(params)};
}

} // namespace mervo::mcp
