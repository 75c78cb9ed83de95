#include "platform/streams.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace mervo::platform {

namespace {

constexpr mode_t kOwnerOnly = 0600;

Descriptor openRegular(const std::filesystem::path& file, int flags) noexcept
{
    Descriptor opened(::open(file.c_str(), flags | O_CLOEXEC | O_NONBLOCK | O_NOCTTY, kOwnerOnly));
    struct stat status = {};
    if (opened.open() && (::fstat(opened.get(), &status) != 0 || !S_ISREG(status.st_mode)))
        opened.close();
    return opened;
}

} // namespace

Descriptor openToRead(const std::filesystem::path& file) noexcept
{
    return openRegular(file, O_RDONLY);
}

Descriptor openToAppend(const std::filesystem::path& file) noexcept
{
    return openRegular(file, O_WRONLY | O_CREAT | O_APPEND);
}

bool appendToFile(const std::filesystem::path& file, std::string_view bytes) noexcept
{
    const Descriptor to = openToAppend(file);
    while (to.open() && !bytes.empty()) {
        const ssize_t count = ::write(to.get(), bytes.data(), bytes.size());
        if (count < 0 && errno != EINTR)
            return false;
        bytes.remove_prefix(static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
    }
    return to.open();
}

std::optional<std::string> readEnd(const std::filesystem::path& file, std::size_t limit)
{
    const Descriptor from = openToRead(file);
    const off_t length = from.open() ? ::lseek(from.get(), 0, SEEK_END) : -1;
    if (length < 0)
        return std::nullopt;
    std::string bytes(std::min(limit, static_cast<std::size_t>(length)), '\0');
    std::size_t read = 0;
    while (read < bytes.size()) {
        const off_t at = length - static_cast<off_t>(bytes.size() - read);
        const ssize_t count = ::pread(from.get(), bytes.data() + read, bytes.size() - read, at);
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            return std::nullopt;
        if (count == 0)
            break; // somebody has cut it meanwhile
        read += static_cast<std::size_t>(count);
    }
    bytes.resize(read);
    return bytes;
}

} // namespace mervo::platform
