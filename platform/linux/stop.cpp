#include "platform/stop.h"

#include <atomic>
#include <cerrno>
#include <cstdint>
#include <sys/eventfd.h>
#include <unistd.h>

namespace mervo::platform {

namespace {

std::atomic<const char*> given = nullptr;
std::atomic<int> event = -1;

void raise(int descriptor) noexcept
{
    const int kept = errno;
    const std::uint64_t one = 1;
    [[maybe_unused]] const auto written = ::write(descriptor, &one, sizeof one);
    errno = kept;
}

} // namespace

void Stop::request(const char* why) noexcept
{
    const char* none = nullptr;
    given.compare_exchange_strong(none, why);
    if (const int descriptor = event; descriptor >= 0)
        raise(descriptor);
}

const char* Stop::reason() noexcept
{
    return given;
}

int Stop::descriptor() noexcept
{
    static const int made = [] {
        const int fresh = ::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
        event = fresh;
        if (fresh >= 0 && given != nullptr)
            raise(fresh); // the request came between its two steps and ours
        return fresh;
    }();
    return made;
}

} // namespace mervo::platform
