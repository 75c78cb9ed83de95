#pragma once

#include "platform/applescript/values/Dictionary.h"

/// The words of the applications "iTerm2" and "Terminal". A window holds one tab, and that one session, so each of the
/// three stands for the same window of the owner's terminal.
namespace mervo::desk {

/// The two share their numbers.
namespace TerminalTerm {
enum Class : applescript::TermId { window = 1, tab, session };
enum Property : applescript::TermId { bounds = 1, currentTab, currentSession, selectedTab, tty };
enum Command : applescript::TermId { createWindow = 1, writeText };
} // namespace TerminalTerm

/// The same object at every call.
const applescript::Dictionary& itermDictionary();
const applescript::Dictionary& terminalDictionary();

} // namespace mervo::desk
