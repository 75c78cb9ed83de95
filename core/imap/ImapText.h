#pragma once

#include "platform/secret.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// The lines of an IMAP conversation (RFC 9051, section 9) as far as archiving needs them: what we write, and what is
/// found in a server's answer. Pure functions; any bytes may come in.
namespace mervo::ImapText {

/// A quoted string: backslashes and double quotes are escaped.
std::string quoted(std::string_view text);
platform::Secret quoted(const platform::Secret& text);

/// Whether a quoted string can carry the text: no line end and no NUL.
bool isQuotable(std::string_view text) noexcept;

/// The line that ends the answer to a command: the first whole one from `from` on that starts with the tag and a blank,
/// without its line end. When there is none, `from` moves on to the last line that is not whole yet.
std::optional<std::string_view> taggedLine(std::string_view answer, std::string_view tag, std::size_t& from);

/// "a1 OK done" is one, in any letter case.
bool isOk(std::string_view taggedLine, std::string_view tag);

/// The name of the folder with the flag \All (RFC 6154) in an answer to LIST; nothing when no folder has it.
std::optional<std::string> allMailFolder(std::string_view answer);

/// The numbers of the first SEARCH line; what is no number is passed over.
std::vector<std::uint64_t> searchHits(std::string_view answer);

} // namespace mervo::ImapText
