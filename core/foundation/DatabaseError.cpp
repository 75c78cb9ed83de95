#include "core/foundation/Database.h"

#include <cerrno>
#include <cstring>
#include <fmt/format.h>
#include <sqlite3.h>

namespace mervo {

namespace {

constexpr int kPrimary = 0xFF; ///< the part of an extended code that names the kind

std::string inWords(std::chrono::milliseconds time)
{
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(time);
    return seconds.count() > 0 ? fmt::format("{} s", seconds.count()) : fmt::format("{} ms", time.count());
}

bool isFull(int code, int systemError)
{
    return (code & kPrimary) == SQLITE_FULL || systemError == ENOSPC || systemError == EDQUOT;
}

std::string because(int systemError)
{
    return systemError == 0 ? std::string() : fmt::format(" ({})", std::strerror(systemError));
}

} // namespace

DatabaseError::DatabaseError(int code, const std::string& message, Circumstances circumstances)
    : std::runtime_error(message)
    , code_(code)
    , circumstances_(std::move(circumstances))
{
}

bool DatabaseError::isDamage() const noexcept
{
    const int kind = code_ & kPrimary;
    return kind == SQLITE_CORRUPT || kind == SQLITE_NOTADB;
}

std::string DatabaseError::fault() const
{
    const auto& [path, waited, systemError] = circumstances_;
    const std::string file = path.empty() ? "the database" : fmt::format("\"{}\"", path.string());
    if (isFull(code_, systemError))
        return fmt::format("the disk of {} is full", file);
    if (code_ == SQLITE_READONLY_DBMOVED)
        return fmt::format("{} was moved or deleted while it was open", file);
    switch (code_ & kPrimary) {
    case SQLITE_BUSY:
    case SQLITE_LOCKED:
        return fmt::format("another program holds {} locked and did not let go of it within {}", file, inWords(waited));
    case SQLITE_READONLY:
        return fmt::format("{} cannot be written", file);
    case SQLITE_CANTOPEN:
    case SQLITE_PERM:
    case SQLITE_AUTH:
        return fmt::format("{} cannot be opened{}", file, because(systemError));
    case SQLITE_CORRUPT:
    case SQLITE_NOTADB:
        return fmt::format("{} is damaged", file);
    case SQLITE_IOERR:
        return fmt::format("the disk failed to read or write {}{}", file, because(systemError));
    case SQLITE_NOMEM:
        return "there is not enough memory";
    default:
        return fmt::format("{} is not as this program expects it ({})", file, what());
    }
}

std::string DatabaseError::remedy() const
{
    if (isFull(code_, circumstances_.systemError))
        return "free some space";
    if (code_ == SQLITE_READONLY_DBMOVED)
        return "the next call opens it anew";
    switch (code_ & kPrimary) {
    case SQLITE_BUSY:
    case SQLITE_LOCKED:
        return "try again, or end that program";
    case SQLITE_READONLY:
        return "make the file and its folder yours and writable";
    case SQLITE_CANTOPEN:
    case SQLITE_PERM:
    case SQLITE_AUTH:
        return "make the file and its folder yours, readable and writable";
    case SQLITE_IOERR:
        return "the system's log says more";
    case SQLITE_NOMEM:
        return "end a program that uses much of it";
    default:
        return "\"mervo doctor\" says what to do";
    }
}

} // namespace mervo
