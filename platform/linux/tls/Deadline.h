#pragma once

#include "platform/tls.h"

#include <cerrno>
#include <chrono>
#include <cstring>
#include <poll.h>

namespace mervo::platform {

/// The end of the time that one operation has.
class Deadline {
public:
    explicit Deadline(std::chrono::milliseconds limit)
        : end_(Clock::now() + limit)
    {
    }

    std::chrono::milliseconds left() const
    {
        const auto rest = std::chrono::ceil<std::chrono::milliseconds>(end_ - Clock::now());
        return std::max(rest, std::chrono::milliseconds(0));
    }

    /// Waits until the socket is ready for `events` of poll. Throws TlsTimeout, TlsFailure.
    void await(int socket, short events) const
    {
        pollfd waiting{socket, events, 0};
        while (true) {
            const int ready = poll(&waiting, 1, static_cast<int>(left().count()));
            if (ready > 0)
                return;
            if (ready == 0)
                throw TlsTimeout();
            if (errno != EINTR)
                throw TlsFailure(std::strerror(errno));
        }
    }

private:
    using Clock = std::chrono::steady_clock;
    Clock::time_point end_;
};

} // namespace mervo::platform
