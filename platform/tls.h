#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>

/// TLS over TCP (RFC 8446, and TLS 1.2), as a client. The server's certificate and name are always verified, against
/// the system's authorities or those of the file that SSL_CERT_FILE names.
namespace mervo::platform {

/// The connection could not be made, or it broke. what() is one sentence, with the remedy for a certificate.
class TlsFailure final : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// The operation did not complete within the caller's limit. The stream is of no further use.
class TlsTimeout final : public std::runtime_error {
public:
    TlsTimeout()
        : std::runtime_error("no answer in time")
    {
    }
};

/// One open connection; belongs to one thread. Every call blocks, at most for its time limit or until this process is
/// asked to stop, which is a TlsFailure. Destroying it closes it.
class TlsStream {
public:
    TlsStream() = default;
    TlsStream(const TlsStream&) = delete;
    TlsStream& operator=(const TlsStream&) = delete;
    virtual ~TlsStream() = default;

    /// All of the bytes. Throws TlsFailure, TlsTimeout.
    virtual void send(std::string_view bytes, std::chrono::milliseconds limit) = 0;
    /// Between 1 and `most` bytes; none at the end of the stream. Throws TlsFailure, TlsTimeout.
    virtual std::string receive(std::size_t most, std::chrono::milliseconds limit) = 0;
};

/// Looks the name up, tries its addresses one after the other and shakes hands, all within the limit. `host` may be a
/// numeric address. Throws TlsFailure, TlsTimeout.
std::unique_ptr<TlsStream> connectTls(const std::string& host, std::uint16_t port, std::chrono::milliseconds limit);

} // namespace mervo::platform
