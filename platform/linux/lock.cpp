#include "platform/lock.h"

#include "platform/ascii.h"
#include "platform/files.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <random>
#include <sys/file.h>
#include <thread>
#include <unistd.h>
#include <utility>

namespace mervo::platform {

namespace {

constexpr std::size_t kLongestNumber = 20;

/// A pause of another length each time, so that several who wait do not ask in step.
std::chrono::microseconds pause()
{
    static thread_local std::minstd_rand random(std::random_device{}());
    return std::chrono::microseconds(std::uniform_int_distribution(500, 1500)(random));
}

std::error_code waitFor(int descriptor, std::chrono::milliseconds limit)
{
    const auto deadline = std::chrono::steady_clock::now() + limit;
    while (::flock(descriptor, LOCK_EX | LOCK_NB) != 0) {
        if (errno != EWOULDBLOCK && errno != EINTR)
            return {errno, std::generic_category()};
        if (std::chrono::steady_clock::now() >= deadline)
            return std::make_error_code(std::errc::timed_out);
        std::this_thread::sleep_for(pause());
    }
    return {};
}

/// For whoever waits in vain; a disk too full for it changes nothing.
void nameHolder(int descriptor)
{
    const std::string number = std::to_string(::getpid());
    if (::ftruncate(descriptor, 0) == 0)
        (void)!::pwrite(descriptor, number.data(), number.size(), 0);
}

} // namespace

std::optional<FileLock> FileLock::acquire(
    const std::filesystem::path& file, std::chrono::milliseconds limit, std::error_code& why) noexcept
{
    try {
        constexpr int kFlags = O_RDWR | O_CREAT | O_CLOEXEC | O_NONBLOCK | O_NOFOLLOW | O_NOCTTY;
        Descriptor descriptor(::open(file.c_str(), kFlags, 0600));
        why = descriptor.open() ? waitFor(descriptor.get(), limit) : std::error_code(errno, std::generic_category());
        if (why)
            return std::nullopt;
        nameHolder(descriptor.get());
        return FileLock(std::move(descriptor));
    } catch (const std::exception&) {
        why = std::make_error_code(std::errc::not_enough_memory);
        return std::nullopt;
    }
}

std::string FileLock::lastHolder(const std::filesystem::path& file)
{
    const auto number = readFile(file, kLongestNumber);
    const bool isNumber = number && std::ranges::all_of(*number, ascii::isDigit);
    return isNumber ? *number : std::string();
}

} // namespace mervo::platform
