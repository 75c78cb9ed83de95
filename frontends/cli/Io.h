#pragma once

#include "platform/secret.h"

#include <cstddef>
#include <functional>
#include <stdexcept>
#include <string>
#include <string_view>

namespace mervo::cli {

/// Standard output could not take what was written to it.
class OutputFailed final : public std::runtime_error {
public:
    explicit OutputFailed(int errorNumber);
    /// True when the reader has gone away ("mervo tools | head"): nobody is left to be told.
    bool readerIsGone() const noexcept { return readerIsGone_; }

private:
    bool readerIsGone_;
};

/// Where a command reads and writes. Tests give their own.
struct Io {
    std::function<void(std::string_view)> out; ///< throws OutputFailed
    std::function<void(std::string_view)> err; ///< never throws
    std::function<std::string()> input; ///< standard input to its end; throws ServiceError
    std::function<platform::Secret()> secretInput; ///< the same
    bool terminal = false; ///< `out` goes straight to a person's screen
    std::size_t width = 80; ///< characters of a line of that screen, 40 to 120; 80 elsewhere
};

/// The three standard streams of this process. Call it before anything opens a file: a standard stream that the caller
/// closed is put on the null device, so that no file of ours can take its number and be written into.
Io standardIo();

/// The text of a file, a pipe or a device, at most kTextLimit bytes. Throws ServiceError when it cannot be read, is
/// longer, or is no text (ill-formed UTF-8, or a zero byte, which no program's argument can hold).
std::string readText(const std::string& path);
inline constexpr std::size_t kTextLimit = 16 * 1024 * 1024;

} // namespace mervo::cli
