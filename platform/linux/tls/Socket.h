#pragma once

#include "platform/linux/tls/Deadline.h"

#include <string>
#include <unistd.h>
#include <utility>

namespace mervo::platform {

/// A non-blocking TCP connection.
class Socket {
public:
    /// Throws TlsFailure in the words of the last address tried, TlsTimeout.
    Socket(const std::string& host, std::uint16_t port, const Deadline& deadline);
    Socket(const Socket&) = delete;
    Socket& operator=(const Socket&) = delete;
    ~Socket()
    {
        if (descriptor_ >= 0)
            close(descriptor_);
    }

    int descriptor() const noexcept { return descriptor_; }

private:
    int descriptor_ = -1;
};

} // namespace mervo::platform
