#pragma once

#include "core/foundation/AutonomyMode.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace mervo {

/// A mail account whose messages are archived over IMAP. `email` identifies it in lists.
struct IMAPArchiveAccount {
    std::string mailAccountName; ///< the account's name in Mail
    std::string email;
    std::string host;
    std::int64_t port = 0;

    bool operator==(const IMAPArchiveAccount&) const = default;
};

/// The contents of `config.json`. Every reader loads it afresh, so a change applies to the next use in any process.
///
/// Reading is tolerant key by key: an absent key, or one of a wrong type, takes its default and leaves the others
/// alone. Nothing that reads ever writes the file.
struct HarnessConfig {
    AutonomyMode autonomyMode = AutonomyMode::copilote;
    std::vector<IMAPArchiveAccount> imapAccounts;
    std::int64_t dailyMutationCap = 100; ///< rule-allowed actions that may run unattended in a UTC day
    std::optional<std::string> rondelHome; ///< a note of the owner; nothing is derived from it
    std::optional<std::string> terminalApp;
    std::string notifyEmail;
    std::optional<std::string> notifyIMessageHandle;
    std::string askChannel = "mail";
    std::string askCleanup = "archive";

    bool operator==(const HarnessConfig&) const = default;

    /// The result of an agent's request to change the slider.
    enum class AutonomyChange { applied, refusedHumanOnly };

    /// `config.json` of the home directory. Missing, unreadable, longer than 1 MiB, or no JSON object: the defaults.
    /// Never fails.
    static HarnessConfig load();

    /// Why `load` takes nothing from the file that is there, as a sentence; empty when it does, or there is no file.
    static std::string complaint();

    /// Whether the value of a known member, as JSON, counts as it stands. Null counts as absent.
    static bool takes(std::string_view key, std::string_view value);

    /// The result of an update.
    struct Update {
        std::string failure; ///< why the file was not changed, as a sentence; empty when it says what it should
        std::string notice; ///< where the old file was kept, which could not be taken over whole; else empty
    };
    /// Changes settings: reads the file, lets `change` work on what it says, and replaces it atomically, all under the
    /// home's lock, so that each of several concurrent writers sees what the previous one wrote. Only a member whose
    /// value changed is written; all else stays as it stands, to the byte, known or not, usable or not. A change that
    /// changes nothing writes nothing. The older `yoloMode` is replaced by `autonomyMode` at the first writing.
    ///
    /// What would be lost, because it is not a JSON object or because the changed member's old value could not be used,
    /// is first kept next to it as `config.json.damaged` (or with a number behind; no earlier one is overwritten). A
    /// file that cannot be read is not touched. Waits up to `patience` for the lock. Throws only what `change` throws.
    static Update update(const std::function<void(HarnessConfig&)>& change,
        std::chrono::milliseconds patience = std::chrono::seconds(10));

    /// Replaces the whole of `config.json` atomically under the same lock, creating the home directory. False when it
    /// could not be written; the old file then stands.
    bool save() const;

    /// The decoding and encoding behind load and save. Never throw. The text has every key in the order above, an
    /// absent optional left out, without blanks.
    static HarnessConfig decode(std::string_view json);
    std::string encode() const;
};

} // namespace mervo
