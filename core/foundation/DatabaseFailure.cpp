#include "core/foundation/DatabaseFailure.h"

#include <cerrno>
#include <chrono>
#include <cstring>
#include <fmt/format.h>
#include <sqlite3.h>

namespace mervo::DatabaseFailure {

namespace {

std::string inWords(std::chrono::milliseconds time)
{
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(time);
    return seconds.count() > 0 ? fmt::format("{} s", seconds.count()) : fmt::format("{} ms", time.count());
}

bool isFull(const sqlite::Error& error)
{
    const int systemError = error.circumstances().systemError;
    return error.primaryCode() == SQLITE_FULL || systemError == ENOSPC || systemError == EDQUOT;
}

std::string because(int systemError)
{
    return systemError == 0 ? std::string() : fmt::format(" ({})", std::strerror(systemError));
}

} // namespace

std::string fault(const sqlite::Error& error)
{
    const auto& [path, longestWait, systemError] = error.circumstances();
    const std::string file = path.empty() ? "the database" : fmt::format("\"{}\"", path.string());
    if (isFull(error))
        return fmt::format("the disk of {} is full", file);
    if (error.code() == SQLITE_READONLY_DBMOVED)
        return fmt::format("{} was moved or deleted while it was open", file);
    if (error.isLocked()) {
        return fmt::format(
            "another program holds {} locked and did not let go of it within {}", file, inWords(longestWait));
    }
    if (error.isDamage())
        return fmt::format("{} is damaged", file);
    switch (error.primaryCode()) {
    case SQLITE_READONLY:
        return fmt::format("{} cannot be written", file);
    case SQLITE_CANTOPEN:
    case SQLITE_PERM:
    case SQLITE_AUTH:
        return fmt::format("{} cannot be opened{}", file, because(systemError));
    case SQLITE_IOERR:
        return fmt::format("the disk failed to read or write {}{}", file, because(systemError));
    case SQLITE_NOMEM:
        return "there is not enough memory";
    default:
        return fmt::format("{} is not as this program expects it ({})", file, error.what());
    }
}

std::string remedy(const sqlite::Error& error)
{
    if (isFull(error))
        return "free some space";
    if (error.code() == SQLITE_READONLY_DBMOVED)
        return "the next call opens it anew";
    if (error.isLocked())
        return "try again, or end that program";
    switch (error.primaryCode()) {
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

std::string sentence(const sqlite::Error& error)
{
    return fault(error) + "; " + remedy(error);
}

} // namespace mervo::DatabaseFailure
