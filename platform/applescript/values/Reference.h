#pragma once

#include "platform/applescript/values/Value.h"

#include <string>

namespace mervo::applescript {

/// A description that is looked up at each use: `item 2 of L` held by a loop variable, `a reference to ...`.
class Reference : public Cell {
public:
    virtual Value fetch() const = 0;
    virtual void store(Value value) const = 0;
    /// As written, in source form: `item 2 of {1, 2}`.
    virtual std::string specifier() const = 0;
    virtual bool isSame(const Reference& other) const { return this == &other; }
};

/// The value behind any number of references.
Value dereferenced(Value value);

} // namespace mervo::applescript
