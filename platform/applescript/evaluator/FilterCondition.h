#pragma once

#include "platform/applescript/syntax/SyntaxTree.h"

namespace mervo::applescript {

/// Whether a part of a filter's condition can differ between candidates: it has `it` in it, or something that belongs
/// to `it` for want of a container. What is not known to be independent counts as dependent.
bool dependsOnCandidate(const Expr& expr);

} // namespace mervo::applescript
