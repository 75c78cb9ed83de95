#pragma once

#include "platform/modules.h"
#include "platform/tls.h"

/// The module of the bundle that holds OpenSSL, and the function in it that connects.
namespace mervo::platform {

/// The caller owns the stream. `stop` is Stop::descriptor, since the module has no state of this program's: when it is
/// readable, waits end.
extern "C" TlsStream* mervoConnectTls(
    const std::string& host, std::uint16_t port, std::chrono::milliseconds limit, int stop);
inline constexpr auto kTlsModule = MERVO_MODULE("mervo-tls.so", mervoConnectTls);

} // namespace mervo::platform
