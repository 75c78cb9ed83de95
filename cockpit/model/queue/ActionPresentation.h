#pragma once

#include "core/policy/PendingStore.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// What an approval card shows of an action; the texts are unfiltered.
namespace mervo::ActionPresentation {

std::string_view symbol(std::string_view tool);
std::string_view tint(std::string_view tool);

/// The arguments in one line: "from boss@example.org · older 30d · Work/Invoices". Empty if there are none but the
/// account.
std::string detailLine(const Args& args);

/// The tool's remarks on the arguments: no effect, or an unlikely one. None for an unknown tool.
std::vector<Remark> remarks(const PendingAction& action);

/// The message that the action would write; nothing if it has no body.
struct Email {
    std::string to, subject, body;
    bool canOpenInMail = true; ///< false if only the mail application knows the addressee
};
std::optional<Email> email(const PendingAction& action);

/// A mailto URL (RFC 6068) of the arguments `to`, `subject` and `body`.
std::string mailtoUrl(const Args& args);

/// A digest of everything in the action.
std::string digest(const PendingAction& action);

} // namespace mervo::ActionPresentation
