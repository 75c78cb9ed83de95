#pragma once

#include "core/policy/Notices.h"
#include "frontends/mcp/Message.h"
#include "frontends/mcp/Protocol.h"

#include <string>
#include <string_view>

/// Answers as lines, line feed included. Every line is JSON in UTF-8 without a raw line break inside, and none is
/// longer than kLongestLine, where clients stop reading, unless the client's own id leaves no room for a text.
namespace mervo::mcp::Reply {

inline constexpr std::size_t kLongestLine = std::size_t{10} * 1024 * 1024;

/// `result` is a JSON text that we made ourselves, within the bound.
std::string result(const RequestId& id, std::string_view result);

/// A result that says nothing more than its era asks of every result.
std::string emptyResult(const RequestId& id, Era era);

/// An empty id is left out. `data` is a JSON text, or empty for none.
std::string error(const RequestId& id, int code, std::string_view text, std::string_view data = {});

/// The outcome of a call as one text for the model. A text too long for a line is cut at a character, and says at its
/// end how many bytes were left out. Notices stand in a second text, and one by one in `_meta`.
std::string toolResult(const RequestId& id, std::string_view text, Era era, const Notices& notices = {});
/// The same for a call that failed.
std::string toolError(const RequestId& id, std::string_view text, Era era, const Notices& notices = {});

/// A word of the client's, short enough to be repeated in an error.
std::string_view echo(std::string_view word);

} // namespace mervo::mcp::Reply
