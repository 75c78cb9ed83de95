#pragma once

#include "platform/desk/mail/MailSettings.h"

#include <string>

namespace mervo::desk {

/// Passes a message to the account's sendmail-compatible command on standard input; the command takes the envelope from
/// it. Returns when the command has accepted it; throws MailError with its status and its own last lines.
void submit(const MailAccountSettings& account, const std::string& message);

} // namespace mervo::desk
