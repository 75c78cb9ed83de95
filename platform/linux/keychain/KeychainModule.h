#pragma once

#include "platform/keychain.h"
#include "platform/modules.h"

namespace mervo::platform::keychain {

/// The four operations, in the module of the bundle that holds libsecret.
class Backend {
public:
    Backend() = default;
    Backend(const Backend&) = delete;
    Backend& operator=(const Backend&) = delete;
    virtual ~Backend() = default;

    virtual Status set(const std::string& service, const std::string& account, const std::string& label,
        const Secret& secret) const = 0;
    virtual Found get(const std::string& service, const std::string& account) const = 0;
    virtual Status find(const std::string& service, const std::string& account) const = 0;
    virtual Status remove(const std::string& service, const std::string& account) const = 0;
};

extern "C" const Backend* mervoKeychain();
inline constexpr auto kKeychainModule = MERVO_MODULE("mervo-keychain.so", mervoKeychain);

} // namespace mervo::platform::keychain
