#include "frontends/mcp/Wakeup.h"

#include <cerrno>
#include <fcntl.h>
#include <system_error>
#include <unistd.h>

namespace mervo::mcp {

Wakeup::Wakeup()
{
    if (::pipe2(ends_, O_CLOEXEC | O_NONBLOCK) != 0)
        throw std::system_error(errno, std::generic_category(), "pipe");
}

Wakeup::~Wakeup()
{
    ::close(ends_[0]);
    ::close(ends_[1]);
}

void Wakeup::notify() const noexcept
{
    const int kept = errno;
    // A full pipe is readable already, so a byte that does not fit is not missed.
    [[maybe_unused]] const auto written = ::write(ends_[1], "!", 1);
    errno = kept;
}

void Wakeup::clear() const noexcept
{
    char bytes[64];
    while (::read(ends_[0], bytes, sizeof bytes) > 0) { }
}

} // namespace mervo::mcp
