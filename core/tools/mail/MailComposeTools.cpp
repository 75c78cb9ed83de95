#include "core/tools/mail/MailTools.h"

#include "core/foundation/HarnessConfig.h"
#include "core/foundation/Text.h"
#include "core/tools/Arguments.h"
#include "core/tools/mail/MailScripts.h"
#include "core/tools/mail/MailSelector.h"

#include <array>

namespace mervo::Tools {

namespace {

Invocation newMessage(const std::string& script, const Args& args)
{
    const std::string& to = Arguments::required(args, "to");
    const std::string& subject = Arguments::required(args, "subject");
    return {script,
        {to, subject, Arguments::optional(args, "body"), Arguments::attachments(args),
            Arguments::optional(args, "from")}};
}

Invocation buildDraft(const Args& args)
{
    return newMessage(MailScripts::draft(), args);
}

Invocation buildSend(const Args& args)
{
    return newMessage(MailScripts::send(), args);
}

/// The recipient is the owner's configured address and nothing else: a `to` of the caller's is never looked at.
Invocation buildNotify(const Args& args)
{
    const std::string configured = HarnessConfig::load().notifyEmail;
    const std::string owner(Text::trimmed(configured));
    if (owner.empty())
        throw ToolError::missingArg("notify email (set it in Settings → Notifications)");
    const std::string body = Arguments::optional(args, "body");
    if (Text::trimmed(body).empty()) {
        throw ToolError::badArg(
            "body is empty - refusing to send a blank notification (use body-file= for large content)");
    }
    return {MailScripts::notify(),
        {Arguments::required(args, "subject"), owner, body, owner, Arguments::attachments(args)}};
}

Invocation answer(const Args& args, const char* toAll)
{
    Invocation invocation{MailScripts::reply(), MailSelector::argv(args)};
    invocation.argv.push_back(Arguments::required(args, "body"));
    invocation.argv.emplace_back(toAll);
    return invocation;
}

Invocation buildReply(const Args& args)
{
    return answer(args, "0");
}

Invocation buildReplyAll(const Args& args)
{
    return answer(args, "1");
}

Invocation buildForward(const Args& args)
{
    Invocation invocation{MailScripts::forward(), MailSelector::argv(args)};
    invocation.argv.push_back(Arguments::required(args, "to"));
    invocation.argv.push_back(Arguments::optional(args, "body"));
    return invocation;
}

} // namespace

const Tool& mailDraft()
{
    static const Tool tool{
        .id = "mail.draft",
        .summary =
            "Create a draft (to, subject, body, [attachments=comma-separated POSIX paths], [from=sender email of "
            "one of your accounts]).",
        .effect = Effect::create,
        .arguments = {required("to", "address of the recipient"), required("subject", "subject"),
            optional("body", "text of the message"),
            optional("attachments", "paths of files, comma-separated", Formats::paths),
            optional("from", "address of one of your accounts")},
        .build = buildDraft,
    };
    return tool;
}

const Tool& mailSend()
{
    static const Tool tool{
        .id = "mail.send",
        .summary = "Send an email (to, subject, body, [attachments=comma-separated POSIX paths], [from=sender email "
                   "of one of your accounts]). Irreversible -> approval.",
        .effect = Effect::destructive,
        .arguments = {required("to", "address of the recipient"), required("subject", "subject"),
            optional("body", "text of the message"),
            optional("attachments", "paths of files, comma-separated", Formats::paths),
            optional("from", "address of one of your accounts")},
        .build = buildSend,
    };
    return tool;
}

const Tool& mailNotify()
{
    static const Tool tool{
        .id = "mail.notify",
        .summary = "Notify the OWNER: send an email to the configured owner address (Settings → notify email), from "
                   "their Gmail account. Args: subject, body (non-empty - errors on a blank/whitespace body instead "
                   "of silently sending nothing). effect=create → runs immediately in Copilote/YOLO (NO approval "
                   "queue) because it can ONLY reach the owner's own target - low-stakes. For autonomous agents to "
                   "push you a daily digest or an alert. Errors if no owner email is configured. The recipient "
                   "comes from config; any `to=` is ignored.",
        .effect = Effect::create,
        .arguments = {required("subject", "subject"), required("body", "text, not blank"),
            optional("attachments", "paths of files, comma-separated", Formats::paths)},
        .build = buildNotify,
        .remarks = Arguments::ignoringRecipient("mail.notify", "address"),
    };
    return tool;
}

const Tool& mailReply()
{
    static const Tool tool{
        .id = "mail.reply",
        .summary = "Reply to the newest matching message - threaded + quoted (account, mailbox, subject= exact OR "
                   "subjectContains, [from], body). On a recurring subject use exact subject= to pin one message. "
                   "Irreversible -> approval.",
        .effect = Effect::destructive,
        .arguments = MailSelector::arguments({required("body", "text of the reply")}),
        .build = buildReply,
    };
    return tool;
}

const Tool& mailReplyAll()
{
    static const Tool tool{
        .id = "mail.replyAll",
        .summary = "Reply-all to the newest matching message - threaded + quoted (same args as mail.reply). "
                   "Irreversible -> approval.",
        .effect = Effect::destructive,
        .arguments = MailSelector::arguments({required("body", "text of the reply")}),
        .build = buildReplyAll,
    };
    return tool;
}

const Tool& mailForward()
{
    static const Tool tool{
        .id = "mail.forward",
        .summary = "Forward the newest matching message to a new recipient (account, mailbox, subject= exact OR "
                   "subjectContains, [from], to, [body]). On a recurring subject use exact subject= to pin one "
                   "message. Irreversible -> approval.",
        .effect = Effect::destructive,
        .arguments = MailSelector::arguments(
            {required("to", "address of the new recipient"), optional("body", "note before the forwarded text")}),
        .build = buildForward,
    };
    return tool;
}

} // namespace mervo::Tools

namespace mervo::MailComposeTools {

std::span<const Tool* const> all()
{
    static const std::array tools{&Tools::mailDraft(), &Tools::mailSend(), &Tools::mailNotify(), &Tools::mailReply(),
        &Tools::mailReplyAll(), &Tools::mailForward()};
    return tools;
}

} // namespace mervo::MailComposeTools
