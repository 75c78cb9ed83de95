#pragma once

#include "platform/desk/mail/MailSettings.h"
#include "platform/desk/mail/OutgoingMail.h"

#include <string_view>

/// What a reply to a message and a forward of it begin with: subject, recipients, sender and thread (RFC 5322, 3.6.4),
/// no text. `message` is the whole message, `account` the one that it lies in, `accounts` all of the owner's.
namespace mervo::desk {

enum class ReplyTo { sender, all };

/// To the Reply-To address, else the sender; to `all` also to everyone else who got it. The owner's own addresses are
/// left out, unless the message was the owner's: then it goes to those who got it.
OutgoingMail replyTo(std::string_view message, const MailAccountSettings& account,
    const std::vector<MailAccountSettings>& accounts, ReplyTo whom);

/// To nobody yet. The attachments go along.
OutgoingMail forwardOf(std::string_view message, const MailAccountSettings& account);

} // namespace mervo::desk
