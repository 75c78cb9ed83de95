#pragma once

#include "frontends/mcp/Json.h"

#include <string>
#include <string_view>
#include <variant>

/// What one line of input is, by the rules of JSON-RPC 2.0 as this protocol narrows them: no batches, no null ids.
namespace mervo::mcp {

/// The name of a request, as it goes back: the JSON text of a string or an integer. Empty where none can be read.
using RequestId = std::string;

namespace ErrorCode {
inline constexpr int kParse = -32700;
inline constexpr int kInvalidRequest = -32600;
inline constexpr int kMethodNotFound = -32601;
inline constexpr int kInvalidParams = -32602;
inline constexpr int kUnsupportedVersion = -32022;
inline constexpr int kTooManyCalls = -32000; ///< our own, from the range left to implementations
} // namespace ErrorCode

struct Request {
    RequestId id;
    std::string method;
    json::Value params; ///< an object, or missing
};

/// Wants no answer, whatever it says.
struct Notification {
    std::string method;
    json::Value params; ///< of any kind
};

/// A client's answer to a request. We ask nothing, so there is nothing to do.
struct Response { };

/// To be answered by an error, with the id when it could be read.
struct Malformed {
    RequestId id;
    int code = ErrorCode::kInvalidRequest;
    std::string text;
};

using Message = std::variant<Request, Notification, Response, Malformed>;

/// The id as a JSON text of any length, empty when the value is no string or integer.
RequestId idOf(const json::Value& value);

/// Reads one line without its end.
Message readMessage(std::string_view line);

} // namespace mervo::mcp
