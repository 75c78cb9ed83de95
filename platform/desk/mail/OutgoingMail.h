#pragma once

#include "platform/desk/mail/MailAddress.h"

#include <filesystem>
#include <string>
#include <vector>

namespace mervo::desk {

/// A composed message that has not been sent.
struct OutgoingMail {
    std::string sender; ///< an address of the account that it goes from; empty: of the first account
    std::vector<MailAddress> to, cc, bcc;
    std::string subject;
    std::string text;
    std::vector<std::filesystem::path> attachments;
    std::string inReplyTo; ///< the Message-ID of the message that this one answers, without angle brackets
    std::vector<std::string> references; ///< the thread, oldest first
    std::string forwarded; ///< the bytes of a message whose attachments go along
};

} // namespace mervo::desk
