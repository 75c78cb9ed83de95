#pragma once

#include <string>
#include <string_view>
#include <vector>

/// The accounts of Mail as the archive needs to know them.
namespace mervo::MailAccounts {

inline constexpr const char* kGmailHost = "imap.gmail.com";
inline constexpr std::string_view kGmailDomain = "gmail.com";

struct Info {
    std::string mailAccountName; ///< identifies it
    std::string email; ///< the first address; may be empty
    std::string server; ///< may be empty

    /// By the server's name or the address's domain.
    bool isGmail() const;
    bool operator==(const Info&) const = default;
};

/// Asks Mail; blocks for a script. Nothing when that fails.
std::vector<Info> all();
std::vector<Info> gmail();

/// The accounts of the script's output: name, address and server parted by tabs, one account a line; other lines are
/// passed over.
std::vector<Info> parse(std::string_view lines);

} // namespace mervo::MailAccounts
