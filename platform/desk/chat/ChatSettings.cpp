#include "platform/desk/chat/ChatSettings.h"

namespace mervo::desk {
namespace {

std::vector<std::string> readCommand(const Table& messages)
{
    messages.refuseUnknownKeys({"send"}, "of \"messages\"");
    return messages.texts("send");
}

} // namespace

void checkChatSection(const Table& messages)
{
    readCommand(messages);
}

std::vector<std::string> messageCommand(const Configuration& configuration)
{
    const auto messages = configuration.section(kChatSection);
    return messages ? readCommand(*messages) : std::vector<std::string>();
}

} // namespace mervo::desk
