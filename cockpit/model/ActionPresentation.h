#pragma once

#include "core/policy/PendingStore.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// What an approval card shows of an action, in the texts as they came.
namespace mervo::ActionPresentation {

std::string_view symbol(std::string_view tool);
std::string_view tint(std::string_view tool);

/// What the action is about, in one line: "from boss@example.org · older 30d · Work/Invoices". Empty when the arguments
/// say nothing but the account.
std::string detailLine(const Args& args);

/// What its tool says of the arguments: those without an effect or with an unlikely one. None from an unknown tool.
std::vector<Remark> remarks(const PendingAction& action);

/// The message that the action would write; nothing when it has no body.
struct Email {
    std::string to, subject, body;
    bool canOpenInMail = true; ///< false where only the mail application knows the addressee
};
std::optional<Email> email(const PendingAction& action);

/// A mailto URL (RFC 6068) of the arguments `to`, `subject` and `body`.
std::string mailtoUrl(const Args& args);

/// A digest of everything in the action: two contents under one id have different ones.
std::string digest(const PendingAction& action);

} // namespace mervo::ActionPresentation
