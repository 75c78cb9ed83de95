#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace mervo::desk {

struct MailAddress {
    std::string name; ///< decoded; empty when there is none
    std::string address; ///< without angle brackets
};

/// The mailboxes of an address field (RFC 5322), groups taken apart, encoded words decoded. Lenient: what is no
/// address at all is given as a name without an address, and nothing makes it throw or recurse.
std::vector<MailAddress> parseAddressList(std::string_view raw);

/// "Name <address>", or what there is of the two.
std::string displayAddress(const MailAddress& address);

/// True when the text can stand as one address in a message that is written: local part, "@", domain, no blanks, no
/// control characters, none of the signs that mean something in an address field.
bool isPlainAddress(std::string_view text);

} // namespace mervo::desk
