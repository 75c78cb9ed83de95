#pragma once

#include "platform/applescript/syntax/SyntaxTree.h"

namespace mervo::applescript {

/// Assigns a slot to every name of the script, so that nothing is looked up by name at run time. Properties are global
/// everywhere. A name in a handler is local unless the handler, or the top level before it, declares it global. The
/// statements at the top level, where they are the run handler, keep their names in the script.
void resolveNames(Script& script);

} // namespace mervo::applescript
