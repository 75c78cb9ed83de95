#pragma once

#include "core/foundation/MervoDB.h"

#include <exception>

namespace mervo {

/// The one boundary of a store, where failures of the database end: what `work` gives on the open database, else the
/// fallback (there is no database, or the statement failed).
template <typename Result, typename Work>
Result orElse(MervoDB* db, Result fallback, Work&& work) noexcept
{
    if (db == nullptr)
        return fallback;
    try {
        return work(db->database());
    } catch (const std::exception&) {
        return fallback;
    }
}

} // namespace mervo
