#pragma once

#include "core/foundation/MervoDB.h"

#include <cstddef>
#include <memory>
#include <utility>

namespace mervo {

/// The database that a store works on.
class StoreDatabase {
public:
    /// Implicit, so that a store can be made from an open database. Empty: there is none, and every use fails.
    StoreDatabase(std::shared_ptr<MervoDB> db) noexcept // NOLINT(google-explicit-constructor)
        : given_(std::move(db))
    {
    }
    StoreDatabase(std::nullptr_t) noexcept { } // NOLINT(google-explicit-constructor)

    /// The home directory's, which nobody opens before it is needed.
    static StoreDatabase ofHome() noexcept { return StoreDatabase(&MervoDB::shared); }
    /// The home directory's for reading only, opened at each use; an empty one where there is none yet.
    static StoreDatabase ofHomeIfAny() noexcept;

    /// Never empty. Throws what opening throws.
    std::shared_ptr<MervoDB> open() const;

private:
    using Opening = std::shared_ptr<MervoDB> (*)();
    explicit StoreDatabase(Opening opening) noexcept
        : opening_(opening)
    {
    }

    std::shared_ptr<MervoDB> given_;
    Opening opening_ = nullptr;
};

} // namespace mervo
