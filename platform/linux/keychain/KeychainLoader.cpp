#include "platform/keychain.h"

#include "platform/linux/keychain/KeychainModule.h"
#include "platform/unified_log.h"

#include <stdexcept>

namespace mervo::platform::keychain {
namespace {

const Backend* loadBackend()
{
    try {
        return load(kKeychainModule)();
    } catch (const std::runtime_error& error) {
        logError("Keychain", std::string("the keychain module cannot be loaded: ") + error.what());
        return nullptr;
    }
}

/// Null when the module is missing from the bundle: then no service can be reached.
const Backend* backend()
{
    static const Backend* const loaded = loadBackend();
    return loaded;
}

} // namespace

Status set(const std::string& service, const std::string& account, const std::string& label, const Secret& secret)
{
    return backend() == nullptr ? kNotAvailable : backend()->set(service, account, label, secret);
}

Found get(const std::string& service, const std::string& account)
{
    return backend() == nullptr ? Found{} : backend()->get(service, account);
}

Status find(const std::string& service, const std::string& account)
{
    return backend() == nullptr ? kNotAvailable : backend()->find(service, account);
}

Status remove(const std::string& service, const std::string& account)
{
    return backend() == nullptr ? kNotAvailable : backend()->remove(service, account);
}

std::optional<std::string> message(Status status)
{
    switch (status) {
    case kSuccess:
        return "No error.";
    case kNotAvailable:
        return "No Secret Service can be reached; start one (gnome-keyring, KWallet or KeePassXC) in this session.";
    case kRefused:
        return "The Secret Service refused; open its keyring program and look at its default keyring.";
    case kNotFound:
        return "The item could not be found in the keychain.";
    case kLocked:
        return "The keyring is locked; unlock it in your keyring program and try again.";
    default:
        return std::nullopt;
    }
}

} // namespace mervo::platform::keychain
