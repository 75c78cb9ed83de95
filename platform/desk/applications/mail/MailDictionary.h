#pragma once

#include "platform/applescript/values/Dictionary.h"

namespace mervo::desk {

/// The numbers of Mail's own terms.
namespace MailTerm {

enum Class : applescript::TermId {
    account = 1,
    mailbox,
    message,
    outgoingMessage,
    recipient,
    toRecipient,
    ccRecipient,
    bccRecipient,
    header,
    mailAttachment,
    richText,
    paragraph,
    attachment,
};

enum Property : applescript::TermId {
    inbox = 1,
    draftsMailbox,
    sentMailbox,
    trashMailbox,
    junkMailbox,
    selection,
    userName,
    fullName,
    serverName,
    emailAddresses,
    enabled,
    accountType,
    unreadCount,
    accountOf,
    container,
    messageId,
    subject,
    sender,
    replyTo,
    content,
    source,
    allHeaders,
    dateReceived,
    dateSent,
    messageSize,
    readStatus,
    flaggedStatus,
    junkMailStatus,
    deletedStatus,
    flagIndex,
    wasRepliedTo,
    wasForwarded,
    mailboxOf,
    visible,
    address,
    mimeType,
    fileSize,
    downloaded,
    fileName,
};

enum Command : applescript::TermId { send = 1, save, open, reply, forward, checkForNewMail };

enum Parameter : applescript::TermId { openingWindow = 1, replyToAll };

} // namespace MailTerm

/// The words that Mail adds to a script; the same object at every call.
const applescript::Dictionary& mailDictionary();

} // namespace mervo::desk
