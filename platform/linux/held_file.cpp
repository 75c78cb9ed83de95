#include "platform/held_file.h"

#include "platform/files.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace mervo::platform {

namespace {

constexpr mode_t kOwnerOnly = 0600;

[[noreturn]] void fail(const std::filesystem::path& removed)
{
    const int number = errno;
    ::unlink(removed.c_str());
    throw std::system_error(number, std::generic_category());
}

bool writeAll(int to, std::string_view bytes) noexcept
{
    while (!bytes.empty()) {
        const ssize_t count = ::write(to, bytes.data(), bytes.size());
        if (count < 0 && errno != EINTR)
            return false;
        bytes.remove_prefix(count < 0 ? 0 : static_cast<std::size_t>(count));
    }
    return true;
}

} // namespace

HeldFile::HeldFile(Descriptor descriptor, std::filesystem::path file)
    : descriptor_(std::move(descriptor))
    , file_(std::move(file))
{
}

HeldFile HeldFile::make(const std::filesystem::path& file, std::string_view bytes)
{
    const std::filesystem::path fresh = file.string() + ".new";
    Descriptor descriptor(::open(fresh.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, kOwnerOnly));
    if (!descriptor.open())
        throw std::system_error(errno, std::generic_category());
    if (::flock(descriptor.get(), LOCK_EX | LOCK_NB) != 0 || !writeAll(descriptor.get(), bytes)
        || ::rename(fresh.c_str(), file.c_str()) != 0)
        fail(fresh);
    return {std::move(descriptor), file};
}

std::optional<HeldFile> HeldFile::takeOver(const std::filesystem::path& file) noexcept
{
    Descriptor descriptor(::open(file.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY));
    if (!descriptor.open() || ::flock(descriptor.get(), LOCK_EX | LOCK_NB) != 0)
        return std::nullopt;
    struct stat status = {};
    if (::fstat(descriptor.get(), &status) != 0 || !S_ISREG(status.st_mode) || status.st_nlink == 0)
        return std::nullopt; // whoever held it before has removed it
    return HeldFile(std::move(descriptor), file);
}

std::optional<std::string> HeldFile::read(std::size_t limit) const
{
    return readFile("/proc/self/fd/" + std::to_string(descriptor_.get()), limit);
}

bool HeldFile::append(std::string_view bytes) const noexcept
{
    return writeAll(descriptor_.get(), bytes);
}

bool HeldFile::remove() const noexcept
{
    return ::unlink(file_.c_str()) == 0;
}

} // namespace mervo::platform
