#include "core/foundation/Database.h"

#include <optional>

namespace mervo {

Database::Database(const std::filesystem::path& file, Access access, std::chrono::milliseconds longestWait)
    : connection_(file, access, longestWait)
{
    connection_.execute("PRAGMA foreign_keys = ON");
}

Database::Turn::Turn(Database& database)
    : database_(database)
    , arrived_(std::chrono::steady_clock::now())
    , guard_(database.mutex_)
{
    if (database.turns_++ == 0)
        database.connection_.lockWait().countFrom(arrived_);
}

Database::Turn::~Turn()
{
    if (--database_.turns_ == 0)
        database_.connection_.lockWait().countFrom(std::nullopt);
}

} // namespace mervo
