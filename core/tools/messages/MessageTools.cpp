#include "core/tools/messages/MessageTools.h"

#include "core/foundation/HarnessConfig.h"
#include "core/foundation/Text.h"
#include "core/tools/Arguments.h"
#include "core/tools/OneLine.h"
#include "core/tools/messages/MessagesDB.h"

#include <algorithm>
#include <array>

namespace mervo::Tools {

namespace {

constexpr std::int64_t kDefaultLimit = 50;

/// The account is pinned to its service, so that nothing ever goes out by another one.
constexpr auto kSend = R"AS(on run argv
	set toAddr to item 1 of argv
	set theText to item 2 of argv
	tell application "Messages"
		set theService to first account whose service type is iMessage
		send theText to participant toAddr of theService
	end tell
	return "OK imessage sent to " & toAddr
end run
)AS";

Invocation buildSend(const Args& args)
{
    const std::string& to = Arguments::required(args, "to");
    return {kSend, {to, Arguments::required(args, "text")}};
}

/// The recipient is the owner's configured handle and nothing else.
Invocation buildNotify(const Args& args)
{
    const std::string configured = HarnessConfig::load().notifyIMessageHandle.value_or("");
    const std::string_view owner = Text::trimmed(configured);
    if (owner.empty())
        throw ToolError::missingArg("notify iMessage handle (set it in Settings → Notifications)");
    return {kSend, {std::string(owner), Arguments::required(args, "text")}};
}

/// One message is one line, whatever its sender wrote.
std::string line(std::string_view text)
{
    return onOneLine(text, " ⏎ ");
}

/// The same for a column with others behind it, which no sender may add to.
std::string column(std::string_view text)
{
    std::string kept = line(text);
    const auto end = std::unique(kept.begin(), kept.end(), [](char a, char b) { return a == '|' && b == '|'; });
    kept.erase(end, kept.end());
    return kept;
}

std::string readInbound(const Args& args)
{
    const auto limit = Arguments::wholeNumber(Arguments::optional(args, "limit")).value_or(kDefaultLimit);
    const auto messages = MessagesDB::recentInbound(Arguments::optional(args, "from"),
        Arguments::wholeNumber(Arguments::optional(args, "since")), Arguments::optional(args, "contains"), limit);
    if (messages.empty())
        return "(no matching inbound messages)";
    std::vector<std::string> lines;
    for (const auto& message : messages)
        lines.push_back(message.date + " || " + column(message.handle) + " || " + line(message.text));
    return Text::join(lines, "\n");
}

} // namespace

const Tool& imessageNotify()
{
    static const Tool tool{
        .id = "imessage.notify",
        .summary = "Notify the OWNER by iMessage: send to the configured owner handle (Settings → notify iMessage "
                   "handle). Args: text. effect=create → runs immediately in Copilote/YOLO (NO approval queue) "
                   "because it can ONLY reach the owner's own configured handle - low-stakes. The autonomous "
                   "iMessage push channel for agents/loops (imessage.send stays approval-gated for arbitrary "
                   "recipients). Errors if no handle is configured. The recipient comes from config; any `to=` is "
                   "ignored.",
        .effect = Effect::create,
        .arguments = {required("text", "what the owner gets to read")},
        .build = buildNotify,
        .remarks = Arguments::ignoringRecipient("imessage.notify", "handle"),
    };
    return tool;
}

const Tool& imessageSend()
{
    static const Tool tool{
        .id = "imessage.send",
        .summary = "Send an iMessage to a recipient (to=<phone or email>, text) - iMessage service only, NO "
                   "green-bubble SMS fallback. Irreversible -> approval. NOTE: Messages scripting is "
                   "version-sensitive; verify once before relying on it.",
        .effect = Effect::destructive,
        .arguments = {required("to", "phone number or address of the recipient"), required("text", "what is sent")},
        .build = buildSend,
    };
    return tool;
}

const Tool& imessageRead()
{
    static const Tool tool{
        .id = "imessage.read",
        .summary = "Read recent INBOUND iMessages from Messages' chat.db (the inbound side has no AppleScript). Args: "
                   "[from=<handle>], [since=<minutes>], [contains=<text>], [limit=50]. One line per message: date || "
                   "handle || text. Read-only. Requires Full Disk Access (chat.db is TCC-protected); errors clearly if "
                   "not granted.",
        .effect = Effect::read,
        .arguments = {optional("from", "the sender's handle, spaces or not"),
            optional("since", "only the last so many minutes",
                Formats::whole(1, Formats::withoutEffect("it counts as not given"), {"no message is recent enough"})),
            optional("contains", "text that the message contains", Formats::needle),
            optional("limit", "at most so many (50)",
                Formats::nativeLimit(kDefaultLimit, {"the answer is empty for 0 and has no limit below"}))},
        .build = Arguments::acceptAll(),
        .nativeRun = readInbound,
    };
    return tool;
}

} // namespace mervo::Tools

namespace mervo::MessageTools {

std::span<const Tool* const> all()
{
    static const std::array tools{&Tools::imessageNotify(), &Tools::imessageSend(), &Tools::imessageRead()};
    return tools;
}

} // namespace mervo::MessageTools
