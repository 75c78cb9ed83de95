#pragma once

#include "platform/applescript/evaluator/Elements.h"
#include "platform/applescript/values/Object.h"

#include <optional>
#include <utility>

namespace mervo::applescript {

/// What a reference leads to: one value, a list that stands for many objects, or the elements of one class of one
/// object, all or a range of them, not fetched.
struct Found {
    static Found many(Value list) { return {.value = std::move(list), .isMany = true}; }
    static Found elements(Ref<Object> parent, const ClassTerm& which, std::optional<Positions> range = {})
    {
        return {.parent = std::move(parent), .every = &which, .range = range};
    }

    bool isSingle() const noexcept { return !every && !isMany; }

    Value value = {};
    bool isMany = false;
    Ref<Object> parent = {};
    const ClassTerm* every = nullptr; // null once the elements are fetched
    std::optional<Positions> range = {};
};

} // namespace mervo::applescript
