#pragma once

#include "platform/tls.h"

/// The module of the bundle that holds OpenSSL, and the function in it that connects; the caller owns the stream.
namespace mervo::platform {

inline constexpr const char* kTlsModule = "mervo-tls.so";
inline constexpr const char* kTlsEntry = "mervoConnectTls";
using TlsEntry = TlsStream*(const std::string& host, std::uint16_t port, std::chrono::milliseconds limit);

} // namespace mervo::platform
