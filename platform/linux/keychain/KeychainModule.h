#pragma once

#include "platform/keychain.h"

namespace mervo::platform::keychain {

/// The four operations, in the module of the bundle that holds libsecret.
class Backend {
public:
    Backend() = default;
    Backend(const Backend&) = delete;
    Backend& operator=(const Backend&) = delete;
    virtual ~Backend() = default;

    virtual Status set(const std::string& service, const std::string& account, const std::string& label,
        const std::string& secret) const = 0;
    virtual Found get(const std::string& service, const std::string& account) const = 0;
    virtual Status find(const std::string& service, const std::string& account) const = 0;
    virtual Status remove(const std::string& service, const std::string& account) const = 0;
};

inline constexpr const char* kKeychainModule = "mervo-keychain.so";
inline constexpr const char* kKeychainEntry = "mervoKeychain";
using KeychainEntry = const Backend*();

} // namespace mervo::platform::keychain
