#include "platform/desk/chat/ChatHealth.h"

#include "platform/desk/chat/ChatSettings.h"
#include "platform/desk/chat/ChatStore.h"
#include "platform/desk/health/Findings.h"

#include <fmt/format.h>
#include <sys/stat.h>

namespace mervo::desk {

std::vector<Finding> examineChatSettings(const Configuration& configuration)
{
    return {commandFinding("desk.messages.send", "Sending messages", messageCommand(configuration), "send",
        "no command: messages cannot be sent (\"send\" in [messages] names one)")};
}

std::vector<Finding> examineChatData()
{
    const std::string id = "desk.messages", label = "Messages database";
    const std::filesystem::path file = chatFile();
    struct stat status { };
    if (stat(file.c_str(), &status) != 0)
        return {makeFinding(id, label, fmt::format("none at {}: there are no conversations yet", file.string()))};
    const std::string answer = askDatabase(file, "SELECT count(*) FROM sqlite_master");
    if (!answer.empty() && answer.find_first_not_of("0123456789") == std::string::npos)
        return {makeFinding(id, label, file.string())};
    return {makeFinding(id, label, fmt::format("{}: {}", file.string(), answer),
        "Make the file readable for this user, or put a sound copy in its place.")};
}

} // namespace mervo::desk
