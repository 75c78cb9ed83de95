#pragma once

#include "platform/secret.h"

#include <cstdint>
#include <optional>
#include <string>

/// Secrets of the owner, kept by the desktop's Secret Service and found by a service and an account.
///
/// Every operation returns a status. Where a keyring is locked the service asks the owner to unlock it, and the
/// operation waits for at most a minute. Blocks; any thread, not the one that shows windows.
namespace mervo::platform::keychain {

using Status = std::int32_t;
inline constexpr Status kSuccess = 0;
inline constexpr Status kNotAvailable = -25291; ///< no Secret Service can be reached
inline constexpr Status kRefused = -25293; ///< the service would not do it
inline constexpr Status kNotFound = -25300;
inline constexpr Status kLocked = -25308; ///< the keyring is locked and was not unlocked

struct Found {
    Status status = kNotAvailable;
    Secret secret; ///< empty unless the status is success
};

/// Adds a secret, or replaces the one with the same service and account. `label` is what keyring programs show.
[[nodiscard]] Status set(
    const std::string& service, const std::string& account, const std::string& label, const Secret& secret);
[[nodiscard]] Found get(const std::string& service, const std::string& account);
/// Success when there is one. Does not touch the secret and unlocks nothing.
[[nodiscard]] Status find(const std::string& service, const std::string& account);
[[nodiscard]] Status remove(const std::string& service, const std::string& account);

/// The sentence for a status, with the remedy; nothing for an unknown one.
std::optional<std::string> message(Status status);

} // namespace mervo::platform::keychain
