#pragma once

#include "core/foundation/StoreDatabase.h"
#include "core/foundation/StoreFailures.h"

#include <exception>
#include <memory>

namespace mervo {

/// The one place where failures of all stores end: returns what `work` returns, else the fallback. The reason goes to
/// the log and to StoreFailures::Scope, under the clause `task`, which says what was not done: "the rules
/// could not be read".
template <typename Result, typename Work>
Result orElse(std::string_view task, Result fallback, Work&& work) noexcept
{
    try {
        return work();
    } catch (const std::exception& reason) {
        StoreFailures::report(task, reason);
        return fallback;
    }
}

/// The same for work on a store's database.
template <typename Result, typename Work>
Result orElse(std::string_view task, const StoreDatabase& db, Result fallback, Work&& work) noexcept
{
    return orElse(task, std::move(fallback), [&] {
        const std::shared_ptr<MervoDB> open = db.open();
        return work(open->database());
    });
}

} // namespace mervo
