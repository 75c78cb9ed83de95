#pragma once

#include "platform/desk/mail/MailSettings.h"

#include <string>

namespace mervo::desk {

/// Hands a message to the account's sendmail-compatible command, exactly as it is configured: the message on standard
/// input, the envelope to be taken from it. Returns when the command has taken it; throws MailError with its status and
/// its own last words.
void submit(const MailAccountSettings& account, const std::string& message);

} // namespace mervo::desk
