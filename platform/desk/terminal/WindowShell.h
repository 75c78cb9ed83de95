#pragma once

#include <string>
#include <vector>

namespace mervo::desk {

/// The owner's shell: $SHELL, else what the user database says, else /bin/sh.
std::string ownerShell();

/// A word that every shell reads as this text.
std::string shellQuoted(const std::string& text);

/// The command line that runs a text as if it had been typed into the shell of a new window: the text first, then the
/// shell at its prompt, unless the text has replaced or left it. "exec bash PATH" is that file run by bash, whatever
/// characters its path has, when PATH as it stands is a file.
std::vector<std::string> shellCommand(const std::string& shell, const std::string& text);

} // namespace mervo::desk
