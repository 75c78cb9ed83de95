#pragma once

#include "platform/desk/consent/Consent.h"

#include <string>

namespace mervo::desk {

/// The question in one sentence: who asks, for what, and what allowing means.
std::string questionFor(const std::string& scope);

/// Puts the question to the owner: in a window where the session has a display, else at the terminal at which the owner
/// logged in (TerminalQuestion.h). Neither reads what the program that asks, or the one that started it, has in its
/// hands: no argument, no variable and no standard input answers it. Waits as long as it takes.
Answer askOwner(const std::string& scope);

} // namespace mervo::desk
