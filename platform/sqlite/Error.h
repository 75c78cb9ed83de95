#pragma once

#include <chrono>
#include <filesystem>
#include <stdexcept>
#include <string>

namespace mervo::sqlite {

/// What every function of this folder throws. `what()` is SQLite's own text.
class Error final : public std::runtime_error {
public:
    struct Circumstances {
        std::filesystem::path file; ///< empty: in memory
        std::chrono::milliseconds longestWait{}; ///< for a lock
        int systemError = 0; ///< errno of the call behind it; 0 when there was none
    };
    Error(int code, const std::string& message, Circumstances circumstances);

    int code() const noexcept { return code_; } ///< SQLite's extended result code
    int primaryCode() const noexcept; ///< the kind of it: SQLITE_BUSY, SQLITE_IOERR...
    const Circumstances& circumstances() const noexcept { return circumstances_; }

    bool isDamage() const noexcept; ///< the file is no database, or its pages are wrong
    bool isLocked() const noexcept; ///< another connection kept its lock for longer than the wait
    bool isMisfit() const noexcept; ///< the statement does not fit the tables, or the values do not

private:
    int code_;
    Circumstances circumstances_;
};

} // namespace mervo::sqlite
