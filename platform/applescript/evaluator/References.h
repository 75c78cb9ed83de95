#pragma once

#include "platform/applescript/evaluator/Evaluator.h"

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
    ElementReference(Evaluator& evaluator, Ref<Object> parent, const ClassTerm& elementClass, std::size_t index)
        : evaluator_(evaluator)
        , parent_(std::move(parent))
        , class_(elementClass)
        , index_(index)
    {
    }
    Value fetch() const override;
    void store(Value value) const override;
    std::string specifier() const override;

private:
    Evaluator& evaluator_;
    Ref<Object> parent_;
    const ClassTerm& class_;
    std::size_t index_;
};

/// `a reference to` a property or an element: the owner and the keys are known, the rest is looked up.
class PartReference final : public Reference {
public:
    PartReference(Evaluator& evaluator, const Expr& part, Value owner, Value firstKey, Value lastKey)
        : evaluator_(evaluator)
        , part_(part)
        , owner_(std::move(owner))
        , firstKey_(std::move(firstKey))
        , lastKey_(std::move(lastKey))
    {
    }
    Value fetch() const override;
    void store(Value value) const override;
    std::string specifier() const override;

private:
    Evaluator& evaluator_;
    const Expr& part_;
    Value owner_;
    Value firstKey_;
    Value lastKey_;
};

/// `a reference to x`, x being a name of the script.
class VariableReference final : public Reference {
public:
    VariableReference(Evaluator& evaluator, const VariableUse& use)
        : evaluator_(evaluator)
        , use_(use)
    {
    }
    Value fetch() const override;
    void store(Value value) const override;
    std::string specifier() const override;

private:
    Evaluator& evaluator_;
    const VariableUse& use_;
};

} // namespace mervo::applescript
