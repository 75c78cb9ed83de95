#pragma once

#include "platform/applescript/syntax/SyntaxTree.h"

#include <memory>
#include <string>

namespace mervo::applescript {

class ApplicationRegistry;

/// Reads a whole script. The registry gives the terms of the applications that it names; none of them is made.
/// Throws ScriptError with a place at the first thing that is not understood.
std::unique_ptr<Script> parse(std::string source, ApplicationRegistry& registry);

} // namespace mervo::applescript
