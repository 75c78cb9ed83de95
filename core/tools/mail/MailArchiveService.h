#pragma once

#include "core/foundation/HarnessConfig.h"
#include "core/foundation/ServiceError.h"
#include "core/policy/Tool.h"

#include <optional>
#include <string>

/// Takes messages out of the inbox. Mail says which messages are meant; over IMAP they are moved by their Message-ID
/// on the server, so that they stay among all mail. An account without IMAP has them moved to a folder by Mail itself.
namespace mervo::MailArchiveService {

inline constexpr const char* kFallbackArchiveMailbox = "Archive";

class ArchiveError final : public ServiceError {
public:
    static ArchiveError missingCredential(const std::string& email);
    static ArchiveError osascript(const std::string& text); ///< the messages could not be selected
    static ArchiveError imap(const std::string& text);

private:
    using ServiceError::ServiceError;
};

/// What mail.archive runs. Over IMAP it works on the server's inbox, whatever mailbox narrowed the selection. Blocks
/// for a script and a conversation; throws ArchiveError.
std::string archive(const Args& args);

/// Where an account's messages go, for previews.
std::string destinationLabel(const std::string& account);

/// The IMAP account that an account of Mail is archived over: the configured one, else one made up for a Gmail account
/// that Mail knows; nothing for the others. May ask Mail.
std::optional<IMAPArchiveAccount> imapAccount(const std::string& mailAccountName);

/// The IMAP account of an address, found in the same places.
std::optional<IMAPArchiveAccount> imapAccountOfAddress(const std::string& email);

/// A configured port as the network takes it: what is out of range is 993.
std::uint16_t portOf(const IMAPArchiveAccount& account) noexcept;

} // namespace mervo::MailArchiveService
