#pragma once

#include "platform/desk/mail/MailSettings.h"

#include <filesystem>
#include <string>
#include <vector>

/// The mailboxes of one account as folders on disk.
namespace mervo::desk {

struct MailFolder {
    std::string name; ///< the path below the account, joined by "/"; the root is "INBOX"
    std::filesystem::path path; ///< the Maildir: the folder that holds cur, new and tmp
};

/// Every mailbox, "INBOX" first, parents before their children. Unreadable folders are listed too, and "INBOX" even
/// when the account's root is missing: reading them reports what is wrong. Never throws.
std::vector<MailFolder> listMailFolders(const MailAccountSettings& account);

/// Throws MailError when the account's root is not there, or is no folder: a mistyped path must not pass for an empty
/// account. The local account's root is made when it is needed.
void requireMailRoot(const MailAccountSettings& account);

/// Every Maildir at or below a folder, hidden ones too, whatever the layout. Never throws.
std::vector<std::filesystem::path> maildirsBelow(const std::filesystem::path& root);

/// Where a mailbox of this name is, or would be created.
std::filesystem::path mailFolderPath(const MailAccountSettings& account, const std::string& name);

/// Makes a mailbox as the account's layout has it, where it is missing. Throws MailError.
void createMailFolder(const MailAccountSettings& account, const std::filesystem::path& maildir);

} // namespace mervo::desk
