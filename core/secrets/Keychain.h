#pragma once

#include "core/foundation/ServiceError.h"
#include "platform/secret.h"

#include <cstdint>
#include <optional>
#include <string>

/// The app passwords of mail accounts. The account attribute of an item is the mailbox address. Blocks while the
/// desktop's secret service answers; any thread, not the one that shows windows.
namespace mervo::Keychain {

inline constexpr const char* kService = "org.mervolabs.app.imap";

class KeychainError final : public ServiceError {
public:
    /// "keychain error <status>: <what the system says of it>".
    static KeychainError unexpectedStatus(std::int32_t status);

private:
    using ServiceError::ServiceError;
};

/// Replaces a password that was there. Throws KeychainError.
void setPassword(const platform::Secret& password, const std::string& account);

/// Nothing when there is none or it cannot be read, for whatever reason; `trouble` says which.
std::optional<platform::Secret> password(const std::string& account);

/// Asks without touching the secret. Never throws.
bool hasPassword(const std::string& account);

/// The same, with the reason: throws KeychainError where the service cannot say whether there is one.
bool isKept(const std::string& account);

/// A missing one is no error, and neither is a failure.
void deletePassword(const std::string& account);

/// Why there is no password: the sentence for the person, with the remedy; nothing when there is one, or when the
/// service works and simply has none.
std::optional<std::string> trouble(const std::string& account);

} // namespace mervo::Keychain
