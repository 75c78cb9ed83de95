#pragma once

#include "core/foundation/AutonomyMode.h"

#include <cstdint>
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

    /// What an agent's request to change the slider came to.
    enum class AutonomyChange { applied, refusedHumanOnly };

    /// `config.json` of the home directory. Missing, unreadable, or no JSON object: the defaults. Never fails.
    static HarnessConfig load();

    /// Replaces `config.json` atomically, creating the home directory. False when it could not be written; the old
    /// file then stands.
    bool save() const;

    /// The decoding and encoding behind load and save. Never throw. The text has every key in the order above, an
    /// absent optional left out, without blanks.
    static HarnessConfig decode(std::string_view json);
    std::string encode() const;
};

} // namespace mervo
