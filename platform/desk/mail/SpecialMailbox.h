#pragma once

#include "platform/desk/mail/MailSettings.h"

#include <string>

namespace mervo::desk {

enum class SpecialMailbox { inbox, drafts, sent, trash, junk };

/// The name of the mailbox that serves a purpose: the configured one, else an existing one with a usual name, else
/// the name that it will have when it is made. Never throws.
std::string specialMailbox(const MailAccountSettings& account, SpecialMailbox which);

} // namespace mervo::desk
