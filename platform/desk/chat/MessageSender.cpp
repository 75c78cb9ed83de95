#include "platform/desk/chat/MessageSender.h"

#include "platform/desk/chat/ChatStore.h"
#include "platform/desk/settings/CommandWords.h"
#include "platform/process.h"
#include "platform/programs.h"
#include "platform/unified_log.h"

#include <algorithm>
#include <ctime>
#include <fmt/format.h>

namespace mervo::desk {
namespace {

/// A handle is an argument of another program and must stay one.
void check(const std::string& handle)
{
    const bool hasControl =
        std::any_of(handle.begin(), handle.end(), [](unsigned char c) { return c < 0x20 || c == 0x7F; });
    if (handle.empty() || handle.starts_with('-') || hasControl)
        throw ChatError("The message was not sent: a handle is a phone number or an e-mail address.");
}

void handOver(const std::vector<std::string>& words, const std::string& handle, const std::string& text)
{
    const std::filesystem::path program = platform::findProgram(words.front());
    if (program.empty()) {
        throw ChatError(fmt::format(
            "The message was not sent: the program “{}” is not there; see [messages] in desk.toml.", words.front()));
    }
    platform::Command command{.program = program,
        .arguments = {words.begin() + 1, words.end()},
        .input = text,
        .ownSession = false}; // whoever ends this script ends what sends for it
    command.arguments.push_back(handle);
    try {
        const platform::Outcome outcome = platform::run(command);
        if (outcome.status != 0)
            throw ChatError(fmt::format("The message was not sent: {}", howItEnded(words.front(), outcome)));
    } catch (const platform::NotStarted& error) {
        throw ChatError(
            fmt::format("The message was not sent: {} cannot be started ({}).", words.front(), error.what()));
    }
}

} // namespace

void sendMessage(const std::vector<std::string>& command, const std::string& handle, const std::string& text)
{
    check(handle);
    if (text.find('\0') != std::string::npos)
        throw ChatError("The message was not sent: its text holds a NUL character.");
    if (command.empty()) {
        throw ChatError("The message was not sent: this desk has no command that sends messages; name one in desk.toml "
                        "([messages] send = [\"program\"]).");
    }
    handOver(command, handle, text);
    try {
        ChatStore(chatFile()).addSent(handle, text, std::time(nullptr));
    } catch (const std::exception& error) {
        // It is out: to call it unsent would send it twice.
        platform::logError("Messages", fmt::format("a sent message is not kept in chat.db: {}", error.what()));
    }
}

} // namespace mervo::desk
