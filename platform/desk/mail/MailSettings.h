#pragma once

#include "platform/desk/settings/Configuration.h"

#include <filesystem>
#include <string>
#include <vector>

/// The mail accounts of desk.toml:
///
///     [[mail.account]]
///     name = "Work"                            # what account= means; no "/"
///     email = ["me@work.example"]              # the first one is the sender
///     path = "~/Mail/work"
///     layout = "maildir++"                     # or "nested"; maildir++ when left out
///     server = "imap.work.example"             # optional
///     sendmail = ["msmtp", "-a", "work", "-t"] # optional: without it only the desk's own addresses can be reached
///     drafts = "Drafts"                        # optional, likewise sent, trash, junk
///
/// With none there is one account "Local" in the desk's own data folder.
namespace mervo::desk {

enum class MailLayout {
    maildirPlusPlus, ///< the root is the inbox; a sub-folder is ".Name.Child" beside cur, new and tmp
    nested, ///< every mailbox is a Maildir, its sub-folders are directories in it
};

struct MailAccountSettings {
    std::string name;
    std::vector<std::string> addresses; ///< at least one; the first is the sender
    std::filesystem::path root; ///< absolute
    MailLayout layout = MailLayout::maildirPlusPlus;
    std::string server = {};
    std::vector<std::string> sendmail = {}; ///< program and arguments; empty: none
    std::string drafts = {}, sent = {}, trash = {}, junk = {}; ///< mailbox names; empty: found by the usual names
    bool local = false; ///< the account that stands in when none is configured; its folder alone is made when needed
};

void checkMailSection(const Table& mail);
inline constexpr Section kMailSection{"mail", "accounts as [[mail.account]]", checkMailSection};

/// In the order of the file, never empty.
std::vector<MailAccountSettings> mailAccounts(const Configuration& configuration);

} // namespace mervo::desk
