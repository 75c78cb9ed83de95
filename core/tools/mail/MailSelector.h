#pragma once

#include "core/policy/Tool.h"

#include <string>
#include <vector>

/// How the tools that work on one message name it: the newest in a mailbox with this subject.
namespace mervo::MailSelector {

inline constexpr Argument kAccount = required("account", "name of the account, see mail.accounts");
inline constexpr Argument kMailbox = required("mailbox", "name of the mailbox, see mail.accounts");

/// The selector's arguments, and the tool's own behind them.
std::vector<Argument> arguments(std::vector<Argument> last = {});

/// "account", then "mailbox". Throws ToolError.
void requireMailbox(const Args& args);

/// "subject or subjectContains", then the mailbox. Throws ToolError.
void require(const Args& args);

/// After the same checks: account, mailbox, subject, subjectContains, from.
std::vector<std::string> argv(const Args& args);

} // namespace mervo::MailSelector
