#include "platform/sqlite/Error.h"

#include <sqlite3.h>
#include <utility>

namespace mervo::sqlite {

Error::Error(int code, const std::string& message, Circumstances circumstances)
    : std::runtime_error(message)
    , code_(code)
    , circumstances_(std::move(circumstances))
{
}

int Error::primaryCode() const noexcept
{
    return code_ & 0xFF;
}

bool Error::isDamage() const noexcept
{
    return primaryCode() == SQLITE_CORRUPT || primaryCode() == SQLITE_NOTADB;
}

bool Error::isLocked() const noexcept
{
    return primaryCode() == SQLITE_BUSY || primaryCode() == SQLITE_LOCKED;
}

bool Error::isMisfit() const noexcept
{
    const int kind = primaryCode();
    return kind == SQLITE_ERROR || kind == SQLITE_SCHEMA || kind == SQLITE_MISMATCH || kind == SQLITE_CONSTRAINT;
}

} // namespace mervo::sqlite
