#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace mervo::desk {

struct MailAddress {
    std::string name; ///< decoded; empty when there is none
    std::string address; ///< without angle brackets
};

/// Parses an address field (RFC 5322): groups are flattened, encoded words decoded. Lenient: text that is not an
/// address becomes a name without one. Never throws and never recurses.
std::vector<MailAddress> parseAddressList(std::string_view raw);

/// "Name <address>", or whichever of the two is set.
std::string displayAddress(const MailAddress& address);

/// True when the text can be written as one address: local part, "@", domain; no blanks, control characters or
/// characters that are special in an address field.
bool isPlainAddress(std::string_view text);

} // namespace mervo::desk
