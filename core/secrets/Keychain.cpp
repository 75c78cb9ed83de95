#include "core/secrets/Keychain.h"

#include "platform/keychain.h"
#include "platform/unicode.h"

namespace mervo::Keychain {

namespace {

namespace keychain = platform::keychain;

/// What the secret service and its programs can carry as an attribute.
bool isAccount(const std::string& account)
{
    return !account.empty() && account.find('\0') == std::string::npos;
}

} // namespace

KeychainError KeychainError::unexpectedStatus(std::int32_t status)
{
    return KeychainError(
        "keychain error " + std::to_string(status) + ": " + keychain::message(status).value_or("unknown"));
}

void setPassword(const platform::Secret& password, const std::string& account)
{
    if (!isAccount(account))
        throw KeychainError::unexpectedStatus(keychain::kRefused);
    // What cannot be deleted is replaced or refused below.
    static_cast<void>(keychain::remove(kService, account));
    const auto status = keychain::set(kService, account, "Mervo: app password of " + account, password);
    if (status != keychain::kSuccess)
        throw KeychainError::unexpectedStatus(status);
}

std::optional<platform::Secret> password(const std::string& account)
{
    auto found = isAccount(account) ? keychain::get(kService, account) : keychain::Found{};
    if (found.status != keychain::kSuccess || !platform::isValidUtf8(found.secret.view()))
        return std::nullopt;
    return std::move(found.secret);
}

bool hasPassword(const std::string& account)
{
    return isAccount(account) && keychain::find(kService, account) == keychain::kSuccess;
}

bool isKept(const std::string& account)
{
    const auto status = isAccount(account) ? keychain::find(kService, account) : keychain::kNotFound;
    if (status != keychain::kSuccess && status != keychain::kNotFound)
        throw KeychainError::unexpectedStatus(status);
    return status == keychain::kSuccess;
}

void deletePassword(const std::string& account)
{
    if (isAccount(account))
        static_cast<void>(keychain::remove(kService, account));
}

std::optional<std::string> trouble(const std::string& account)
{
    const auto status = isAccount(account) ? keychain::get(kService, account).status : keychain::kNotFound;
    if (status == keychain::kSuccess || status == keychain::kNotFound)
        return std::nullopt;
    return KeychainError::unexpectedStatus(status).what();
}

} // namespace mervo::Keychain
