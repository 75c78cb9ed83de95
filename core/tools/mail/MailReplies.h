#pragma once

#include <string>

/// What the owner has answered by mail.
namespace mervo::MailReplies {

/// The cleaned text of the newest message in a mailbox whose subject holds the tag with "re:" somewhere before it, and
/// whose sender's address is this one, letter case aside; a display name counts for nothing, and a draft is no reply.
/// Empty when there is none, when it says nothing of its own, or when Mail cannot be asked. Blocks for a script; never
/// throws.
std::string newest(
    const std::string& account, const std::string& mailbox, const std::string& tag, const std::string& address);

} // namespace mervo::MailReplies
