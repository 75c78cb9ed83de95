#pragma once

#include "core/policy/Tool.h"

#include <string>
#include <vector>

/// The Message-IDs of the messages that a call's criteria select.
namespace mervo::MailMessageIds {

struct Gathered {
    bool ok = false;
    std::vector<std::string> ids; ///< bare, in mailbox order
    std::string error; ///< of the script
};

/// Runs the script of mail.messageId on one mailbox. Never throws.
Gathered gather(const std::string& account, const std::string& mailbox, const Args& args);

} // namespace mervo::MailMessageIds
