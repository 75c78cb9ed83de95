#pragma once

#include "platform/applescript/evaluator/Applications.h"
#include "platform/applescript/syntax/SyntaxTree.h"
#include "platform/applescript/values/Reference.h"

#include <cstddef>
#include <vector>

namespace mervo::applescript {

/// `item 2 of L`, as the variable of a loop holds it.
class ItemReference final : public Reference {
public:
    ItemReference(Value list, std::size_t index)
        : list_(std::move(list))
        , index_(index)
    {
    }
    Value fetch() const override;
    void store(Value value) const override;
    std::string specifier() const override;
    bool isSame(const Reference& other) const override;

private:
    Value list_;
    std::size_t index_;
};

/// `window 2`, looked up anew at each use: the variable of a loop over elements that were not fetched.
class ElementReference final : public Reference {
public:
    ElementReference(Applications& applications, Ref<Object> parent, const ClassTerm& elementClass, std::size_t index)
        : applications_(applications)
        , parent_(std::move(parent))
        , class_(elementClass)
        , index_(index)
    {
    }
    Value fetch() const override;
    void store(Value value) const override;
    std::string specifier() const override;

private:
    Applications& applications_;
    Ref<Object> parent_;
    const ClassTerm& class_;
    std::size_t index_;
};

/// `a reference to x`, x being a name of the script: one of its global variables, which must outlive the reference.
class VariableReference final : public Reference {
public:
    VariableReference(Value& variable, Symbol name)
        : variable_(variable)
        , name_(name)
    {
    }
    Value fetch() const override;
    void store(Value value) const override { variable_ = std::move(value); }
    std::string specifier() const override { return name_.spelling(); }

private:
    Value& variable_;
    Symbol name_;
};

/// The value of a variable; -2753 at this place where it has none.
const Value& defined(const Value& variable, Symbol name, Place place);

} // namespace mervo::applescript
