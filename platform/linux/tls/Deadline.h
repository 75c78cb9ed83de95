#pragma once

#include "platform/tls.h"

#include <array>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <future>
#include <poll.h>

namespace mervo::platform {

/// The end of the time that one operation has. It comes early when the descriptor `stop` is readable.
class Deadline {
public:
    Deadline(std::chrono::milliseconds limit, int stop)
        : end_(Clock::now() + limit)
        , stop_(stop)
    {
    }

    std::chrono::milliseconds left() const
    {
        const auto rest = std::chrono::ceil<std::chrono::milliseconds>(end_ - Clock::now());
        return std::max(rest, std::chrono::milliseconds(0));
    }

    int stop() const { return stop_; }

    /// Waits until a result is there that has no descriptor. Throws as `await`.
    template <typename Future>
    void awaitResult(const Future& result) const
    {
        constexpr std::chrono::milliseconds kLook{50};
        while (result.wait_for(std::min(kLook, left())) != std::future_status::ready) {
            pollfd asked{stop_, POLLIN, 0};
            if (poll(&asked, 1, 0) > 0)
                throw TlsFailure("this program was asked to stop");
            if (left().count() == 0)
                throw TlsTimeout();
        }
    }

    /// Waits until the socket is ready for `events` of poll. Throws TlsTimeout, TlsFailure.
    void await(int socket, short events) const
    {
        std::array<pollfd, 2> waiting{{{socket, events, 0}, {stop_, POLLIN, 0}}};
        while (true) {
            const int ready = poll(waiting.data(), waiting.size(), static_cast<int>(left().count()));
            if (ready > 0 && waiting[1].revents != 0)
                throw TlsFailure("this program was asked to stop");
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
    int stop_;
};

} // namespace mervo::platform
