#pragma once

#include "platform/desk/mail/MailSettings.h"

#include <string>

namespace mervo::desk {

enum class SpecialMailbox { inbox, drafts, sent, trash, junk };

/// The name of the mailbox for a purpose: the configured one, else an existing one with a usual name, else the name
/// under which it would be created. Never throws.
std::string specialMailbox(const MailAccountSettings& account, SpecialMailbox which);

} // namespace mervo::desk
