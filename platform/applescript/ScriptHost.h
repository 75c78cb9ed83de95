#pragma once

#include "platform/applescript/values/Application.h"

namespace mervo::applescript {

/// The whole program `osascript`, over the applications of a registry:
///
///     osascript [-l AppleScript] [-s FLAGS] [-e LINE]... [FILE | -] [ARG]...
///     osascript --call
///
/// The second form is for programs: script and ARGs come on standard input, each ended by a NUL, so that no list of
/// processes shows them and none is too long.
///
/// Reads the script, parses all of it before running any of it, runs it with the ARGs and writes the result to
/// standard output. On failure standard output stays empty, the last line of standard error is
/// `NAME:START:END: execution error: MESSAGE (NUMBER)` (or `syntax error`), and the status is 1. Offsets count
/// characters from 0. Never throws.
int runScriptHost(int argc, char** argv, ApplicationRegistry& registry);

} // namespace mervo::applescript
