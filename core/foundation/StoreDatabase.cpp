#include "core/foundation/StoreDatabase.h"

#include "core/foundation/ServiceError.h"

namespace mervo {

StoreDatabase StoreDatabase::ofHomeIfAny() noexcept
{
    return StoreDatabase([] {
        auto db = MervoDB::existing();
        return db != nullptr ? db : MervoDB::inMemory();
    });
}

std::shared_ptr<MervoDB> StoreDatabase::open() const
{
    if (opening_ != nullptr)
        return opening_();
    if (given_ == nullptr)
        throw ServiceError("there is no database");
    return given_;
}

} // namespace mervo
