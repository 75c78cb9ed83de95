#pragma once

#include "platform/applescript/syntax/SyntaxTree.h"
#include "platform/applescript/values/Object.h"

#include <cstddef>
#include <utility>
#include <vector>

namespace mervo::applescript {

/// The candidates of a filter, with what its condition has asked for so far.
struct Filter {
    Ref<Object> parent;
    const ClassTerm* elementClass = nullptr;
    Value candidates;
    std::size_t index = 0; // the candidate that is looked at
    std::vector<std::pair<TermId, Value>> columns; // a property of all candidates
    std::vector<std::pair<const Expr*, Value>> outside; // what has been computed once for all candidates
};

/// One call of a handler, or the run of the script.
struct Frame {
    std::vector<Value> locals;
    Value it; // the target of the innermost `tell`
    Value result;
    Value returned;
    Filter* filter = nullptr; // set while `it` is a candidate
};

} // namespace mervo::applescript
