#pragma once

#include "platform/desk/chat/ChatError.h"

#include <string>
#include <vector>

namespace mervo::desk {

/// Sends a text through the configured command: the handle is its last argument, the text its standard input. A sent
/// message is recorded in the database of messages. Throws ChatError; then nothing was sent.
void sendMessage(const std::vector<std::string>& command, const std::string& handle, const std::string& text);

} // namespace mervo::desk
