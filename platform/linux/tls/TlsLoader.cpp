#include "platform/tls.h"

#include "platform/linux/tls/TlsModule.h"
#include "platform/stop.h"

namespace mervo::platform {

std::unique_ptr<TlsStream> connectTls(const std::string& host, std::uint16_t port, std::chrono::milliseconds limit)
{
    static const auto connect = [] {
        try {
            return load(kTlsModule);
        } catch (const std::runtime_error& error) {
            throw TlsFailure(std::string("secure connections cannot be loaded: ") + error.what());
        }
    }();
    return std::unique_ptr<TlsStream>(connect(host, port, limit, Stop::descriptor()));
}

} // namespace mervo::platform
