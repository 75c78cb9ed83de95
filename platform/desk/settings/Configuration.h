#pragma once

#include <filesystem>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

/// The owner's configuration of the desk, desk.toml:
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
///     [messages]
///     send = ["my-bridge", "--send"]           # gets the handle as last argument and the text on standard input
///
/// With no file, or a file without accounts, there is one account "Local" in the desk's own data folder. A file with
/// a mistake in it is an error and never means another account in silence.
namespace mervo::desk {

/// what() names the file, the line, the key and what is wrong with it.
class ConfigurationError final : public std::runtime_error {
public:
    ConfigurationError(const std::filesystem::path& file, long line, std::string_view sentence);
};

enum class MailLayout {
    maildirPlusPlus, ///< the root is the inbox; a sub-folder is ".Name.Child" beside cur, new and tmp
    nested, ///< every mailbox is a Maildir, its sub-folders are directories in it
};

struct MailAccountSettings {
    std::string name;
    std::vector<std::string> addresses; ///< at least one; the first is the sender
    std::filesystem::path root; ///< absolute
    MailLayout layout = MailLayout::maildirPlusPlus;
    std::string server;
    std::vector<std::string> sendmail; ///< program and arguments; empty: none
    std::string drafts, sent, trash, junk; ///< mailbox names; empty: found by the usual names
    bool local = false; ///< the account that stands in when none is configured; its folder alone is made when needed
};

struct Configuration {
    std::filesystem::path file; ///< empty when there is none
    std::vector<std::string> messagesSend; ///< program and arguments; empty: messages cannot be sent
    std::vector<MailAccountSettings> mailAccounts; ///< in the order of the file, never empty
};

/// Reads the configuration at its place. Throws ConfigurationError.
Configuration loadConfiguration();

/// The same from a text; `file` is for the error's words.
Configuration parseConfiguration(std::string_view text, const std::filesystem::path& file);

} // namespace mervo::desk
