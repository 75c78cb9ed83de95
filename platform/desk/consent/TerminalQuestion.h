#pragma once

#include "platform/desk/consent/Consent.h"

#include <filesystem>
#include <string>

namespace mervo::desk {

/// Asks at the terminal, and waits for the word "allow" or "refuse" typed in full. Without a question it is nobody's
/// answer unless all of this holds:
///
///  - standard input and standard error are the controlling terminal itself, so that nothing is answered by a pipe;
///  - this process stands in its foreground, so that it does not take what is typed for another program;
///  - the system has logged this process's user in at this terminal, in a process above this one (`logins`, the file of
///    utmp(5)). A terminal that a program has made for itself, as programs of agents do, is none at which somebody
///    sits.
///
/// What was typed before the question is dropped. This keeps an agent from answering with what it runs programs by; a
/// program of the same user that sets out to cheat can write the record itself.
Answer askAtTerminal(const std::string& sentence, const std::filesystem::path& logins = "/run/utmp");

} // namespace mervo::desk
