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

std::string DatabaseError::sentence() const
{
    const auto& [path, waited, systemError] = circumstances_;
    const std::string file = path.empty() ? "the database" : fmt::format("\"{}\"", path.string());
    if (isFull(code_, systemError))
        return fmt::format("the disk of {} is full; free some space", file);
    if (code_ == SQLITE_READONLY_DBMOVED)
        return fmt::format("{} was moved or deleted while it was open; the next call opens it anew", file);
    switch (code_ & kPrimary) {
    case SQLITE_BUSY:
    case SQLITE_LOCKED:
        return fmt::format("another program holds {} locked and did not let go of it within {}; "
                           "try again, or end that program",
            file, inWords(waited));
    case SQLITE_READONLY:
        return fmt::format("{} cannot be written; make the file and its folder yours and writable", file);
    case SQLITE_CANTOPEN:
    case SQLITE_PERM:
    case SQLITE_AUTH:
        return fmt::format("{} cannot be opened{}; make the file and its folder yours, readable and writable", file,
            because(systemError));
    case SQLITE_CORRUPT:
    case SQLITE_NOTADB:
        return fmt::format("{} is damaged; \"mervo doctor\" says what to do", file);
    case SQLITE_IOERR:
        return fmt::format(
            "the disk failed to read or write {}{}; the system's log says more", file, because(systemError));
    case SQLITE_NOMEM:
        return "there is not enough memory";
    default:
        return fmt::format("{} is not as this program expects it ({}); \"mervo doctor\" says what to do", file, what());
    }
}

} // namespace mervo
