#pragma once

#include "platform/descriptor.h"
#include "platform/linux/tls/Deadline.h"

#include <string>

namespace mervo::platform {

/// A non-blocking TCP connection.
class Socket {
public:
    /// Throws TlsFailure in the words of the last address tried, TlsTimeout.
    Socket(const std::string& host, std::uint16_t port, const Deadline& deadline);

    int descriptor() const noexcept { return descriptor_.get(); }

private:
    Descriptor descriptor_;
};

} // namespace mervo::platform
