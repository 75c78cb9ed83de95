#include "frontends/cli/Io.h"

#include "core/foundation/ServiceError.h"
#include "platform/descriptor.h"
#include "platform/unicode.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <fmt/format.h>
#include <sys/ioctl.h>
#include <system_error>
#include <unistd.h>

namespace mervo::cli {

namespace {

std::string describe(int errorNumber)
{
    return std::system_category().message(errorNumber);
}

/// 0, or the number of the error that stopped the writing.
int writeAll(int descriptor, std::string_view bytes) noexcept
{
    while (!bytes.empty()) {
        const ssize_t count = ::write(descriptor, bytes.data(), bytes.size());
        if (count >= 0) {
            bytes.remove_prefix(static_cast<std::size_t>(count));
        } else if (errno != EINTR) {
            return errno;
        }
    }
    return 0;
}

/// A block for reading that holds nothing afterwards.
struct Block {
    Block() = default;
    Block(const Block&) = delete;
    Block& operator=(const Block&) = delete;
    ~Block() { platform::wipe(bytes); }
    std::array<char, 65536> bytes;
};

/// `Text` is std::string or platform::Secret.
template <typename Text>
Text readAll(int descriptor, const std::string& what)
{
    Text text;
    Block block;
    for (;;) {
        const ssize_t count = ::read(descriptor, block.bytes.data(), block.bytes.size());
        if (count == 0)
            break;
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            throw ServiceError(fmt::format("{} cannot be read: {}", what, describe(errno)));
        text.append(std::string_view(block.bytes.data(), static_cast<std::size_t>(count)));
        if (text.size() > kTextLimit)
            throw ServiceError(fmt::format("{} is longer than {} MiB", what, kTextLimit / (1024 * 1024)));
    }
    const std::string_view all(text.data(), text.size());
    if (!platform::isValidUtf8(all))
        throw ServiceError(fmt::format("{} is no text: its bytes are not valid UTF-8", what));
    if (all.find('\0') != std::string::npos)
        throw ServiceError(fmt::format("{} is no text: it holds a zero byte", what));
    return text;
}

} // namespace

OutputFailed::OutputFailed(int errorNumber)
    : std::runtime_error(fmt::format("the output could not be written: {}", describe(errorNumber)))
    , readerIsGone_(errorNumber == EPIPE)
{
}

Io standardIo()
{
    // The null device is opened the wrong way round: reading from it, or writing to it, fails as on a closed stream.
    for (const auto& [descriptor, flags] : {std::pair{0, O_WRONLY}, {1, O_RDONLY}, {2, O_RDONLY}}) {
        if (::fcntl(descriptor, F_GETFD) < 0 && errno == EBADF)
            static_cast<void>(::open("/dev/null", flags)); // takes the lowest free number, which is this one
    }
    ::signal(SIGPIPE, SIG_IGN); // a reader that has gone shows as an error of write()
    Io io;
    io.out = [](std::string_view text) {
        if (const int error = writeAll(STDOUT_FILENO, text); error != 0)
            throw OutputFailed(error);
    };
    io.err = [](std::string_view text) { writeAll(STDERR_FILENO, text); };
    io.input = [] { return readAll<std::string>(STDIN_FILENO, "standard input"); };
    io.secretInput = [] { return readAll<platform::Secret>(STDIN_FILENO, "standard input"); };
    io.terminal = ::isatty(STDOUT_FILENO) == 1;
    winsize size{};
    if (io.terminal && ::ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0)
        io.width = std::clamp<std::size_t>(size.ws_col, 40, 120);
    return io;
}

std::string readText(const std::string& path)
{
    const std::string what = fmt::format("the file \"{}\"", path);
    const platform::Descriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
    if (!file.open())
        throw ServiceError(fmt::format("{} cannot be read: {}", what, describe(errno)));
    return readAll<std::string>(file.get(), what);
}

} // namespace mervo::cli
