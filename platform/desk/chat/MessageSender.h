#pragma once

#include "platform/desk/chat/ChatError.h"

#include <string>
#include <vector>

namespace mervo::desk {

/// Sends a text through the command that desk.toml names ([messages] send): the handle is its last argument, the text
/// its standard input. What it took is kept in the database of messages as sent. Throws ChatError; then nothing was
/// sent.
void sendMessage(const std::vector<std::string>& command, const std::string& handle, const std::string& text);

} // namespace mervo::desk
