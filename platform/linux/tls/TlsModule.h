#pragma once

#include "platform/tls.h"

/// The module of the bundle that holds OpenSSL, and the function in it that connects; the caller owns the stream.
namespace mervo::platform {

inline constexpr const char* kTlsModule = "mervo-tls.so";
inline constexpr const char* kTlsEntry = "mervoConnectTls";
/// `stop` is Stop::descriptor, since the module has no state of this program's: when it is readable, waits end.
using TlsEntry = TlsStream*(const std::string& host, std::uint16_t port, std::chrono::milliseconds limit, int stop);

} // namespace mervo::platform
