#pragma once

#include "platform/desk/settings/Configuration.h"

#include <filesystem>
#include <string>
#include <vector>

/// The mailboxes of one account as folders on disk.
namespace mervo::desk {

struct MailFolder {
    std::string name; ///< the path below the account, joined by "/"; the root is "INBOX"
    std::filesystem::path path; ///< the Maildir: the folder that holds cur, new and tmp
};

/// Every mailbox, "INBOX" first, parents before their children. A folder whose inside cannot be read is listed as
/// well: reading it tells what is wrong. "INBOX" is listed even when the account's root is missing, for the same
/// reason. Never throws.
std::vector<MailFolder> listMailFolders(const MailAccountSettings& account);

/// Where a mailbox of this name lies, or would lie when it is made.
std::filesystem::path mailFolderPath(const MailAccountSettings& account, const std::string& name);

} // namespace mervo::desk
