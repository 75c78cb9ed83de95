#include "platform/desk/applications/mail/MailDictionary.h"

namespace mervo::desk {
namespace {

using applescript::ClassTerm;
using applescript::CommandTerm;
using applescript::kSettable;
using applescript::TermId;
namespace CommonTerm = applescript::CommonTerm;
using Direct = CommandTerm::Direct;

std::vector<ClassTerm> storedClasses()
{
    using namespace MailTerm;
    return {
        {CommonTerm::applicationClass, "application", "applications",
            {{inbox, "inbox"}, {draftsMailbox, "drafts mailbox"}, {sentMailbox, "sent mailbox"},
                {trashMailbox, "trash mailbox"}, {junkMailbox, "junk mailbox"}, {selection, "selection"}},
            {account, mailbox, outgoingMessage}},
        {account, "account", "accounts",
            {{CommonTerm::name, "name"}, {CommonTerm::id, "id"}, {userName, "user name"}, {fullName, "full name"},
                {serverName, "server name"}, {emailAddresses, "email addresses"}, {enabled, "enabled"},
                {accountType, "account type"}},
            {mailbox}, applescript::kNoTerm, {"imap account", "pop account", "iCloud account"},
            {"imap accounts", "pop accounts", "iCloud accounts"}},
        {mailbox, "mailbox", "mailboxes",
            {{CommonTerm::name, "name"}, {unreadCount, "unread count"}, {accountOf, "account"},
                {container, "container"}},
            {mailbox, message}},
        {message, "message", "messages",
            {{CommonTerm::id, "id"}, {messageId, "message id"}, {subject, "subject"}, {sender, "sender"},
                {replyTo, "reply to"}, {content, "content"}, {source, "source"}, {allHeaders, "all headers"},
                {dateReceived, "date received"}, {dateSent, "date sent"}, {messageSize, "message size"},
                {readStatus, "read status", kSettable}, {flaggedStatus, "flagged status", kSettable},
                {junkMailStatus, "junk mail status", kSettable}, {deletedStatus, "deleted status", kSettable},
                {flagIndex, "flag index", kSettable}, {wasRepliedTo, "was replied to"}, {wasForwarded, "was forwarded"},
                {mailboxOf, "mailbox", kSettable}},
            {recipient, toRecipient, ccRecipient, bccRecipient, header, mailAttachment}},
        {header, "header", "headers", {{CommonTerm::name, "name"}, {content, "content"}}},
        {mailAttachment, "mail attachment", "mail attachments",
            {{CommonTerm::id, "id"}, {CommonTerm::name, "name"}, {mimeType, "MIME type"}, {fileSize, "file size"},
                {downloaded, "downloaded"}}},
    };
}

std::vector<ClassTerm> composedClasses()
{
    using namespace MailTerm;
    return {
        {outgoingMessage, "outgoing message", "outgoing messages",
            {{CommonTerm::id, "id"}, {subject, "subject", kSettable}, {sender, "sender", kSettable},
                {content, "content", kSettable}, {visible, "visible", kSettable}},
            {recipient, toRecipient, ccRecipient, bccRecipient, paragraph, attachment}},
        {recipient, "recipient", "recipients",
            {{CommonTerm::name, "name", kSettable}, {address, "address", kSettable}}},
        {toRecipient, "to recipient", "to recipients", {}, {}, recipient},
        {ccRecipient, "cc recipient", "cc recipients", {}, {}, recipient},
        {bccRecipient, "bcc recipient", "bcc recipients", {}, {}, recipient},
        {richText, "rich text", "rich texts", {}, {paragraph, attachment}},
        {paragraph, "paragraph", "paragraphs"},
        {attachment, "attachment", "attachments", {{fileName, "file name"}}},
    };
}

std::vector<CommandTerm> commands()
{
    using namespace MailTerm;
    return {
        {send, "send"},
        {save, "save"},
        {open, "open"},
        {reply, "reply", {{openingWindow, "opening window"}, {replyToAll, "reply to all"}}},
        {forward, "forward", {{openingWindow, "opening window"}}},
        {checkForNewMail, "check for new mail", {}, Direct::none},
    };
}

applescript::Dictionary build()
{
    std::vector<ClassTerm> classes = storedClasses();
    for (ClassTerm& composed : composedClasses())
        classes.push_back(std::move(composed));
    return {"Mail", std::move(classes), commands(), {"imap", "unknown"}};
}

} // namespace

const applescript::Dictionary& mailDictionary()
{
    static const applescript::Dictionary dictionary = build();
    return dictionary;
}

} // namespace mervo::desk
