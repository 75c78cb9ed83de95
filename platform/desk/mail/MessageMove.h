#pragma once

#include "platform/desk/mail/Maildir.h"

#include <filesystem>
#include <optional>
#include <string_view>

/// Renaming, moving and removing the file of one message. Each is one rename or unlink, so that a process killed at any
/// moment leaves the message in one place. Only a move to another file system copies first: killed midway, it leaves
/// the message where it was or in both places, never in none.
///
/// All return nothing (or false) when the file is not there, and throw MailError when the system refuses; in both cases
/// nothing has changed.
namespace mervo::desk {

/// Renames it to these letters, in cur. The base stays.
[[nodiscard]] std::optional<MaildirEntry> renameMessage(
    const std::filesystem::path& maildir, const MaildirEntry& message, std::string_view info);

/// Moves it to cur of another Maildir, with these letters and the time at which it was received. It gets a new base:
/// the old one may be taken there, and parts of it (such as the ",U=" of synchronisers) are good in one folder only.
[[nodiscard]] std::optional<MaildirEntry> moveMessage(const std::filesystem::path& maildir, const MaildirEntry& message,
    const std::filesystem::path& destination, std::string_view info);

[[nodiscard]] bool removeMessage(const std::filesystem::path& maildir, const MaildirEntry& message);

} // namespace mervo::desk
