#pragma once

#include "platform/desk/settings/Configuration.h"

#include <string>
#include <vector>

/// Messages in desk.toml:
///
///     [messages]
///     send = ["my-bridge", "--send"] # gets the handle as last argument and the text on standard input
namespace mervo::desk {

void checkChatSection(const Table& messages);
inline constexpr Section kChatSection{"messages", "[messages]", checkChatSection};

/// The program that sends messages and its arguments; empty: messages cannot be sent.
std::vector<std::string> messageCommand(const Configuration& configuration);

} // namespace mervo::desk
