#pragma once

#include "platform/desk/mail/MailError.h"

#include <array>
#include <filesystem>
#include <span>
#include <string>
#include <string_view>

namespace mervo::desk {

/// The keywords of one Maildir as Dovecot keeps them: the file `dovecot-keywords` beside cur and new has a line
/// "number keyword" for each, and in the names of message files keyword 0 is the letter "a", keyword 25 "z". Keywords
/// ignore the case of ASCII letters, as in IMAP (RFC 9051).
class MaildirKeywords {
public:
    static constexpr std::size_t kMost = 26;

    /// A file that is missing, cannot be read or makes no sense has no keywords; so has a line that makes none.
    static MaildirKeywords read(const std::filesystem::path& maildir);

    /// The letter of a keyword; 0 when it has none here.
    char letter(std::string_view keyword) const noexcept;
    /// The keyword of a letter from "a" to "z"; empty when it has none.
    std::string_view keyword(char letter) const noexcept;

    /// Gives a letter to each of the wanted keywords, in the file too, where they have none. Other programs that write
    /// the file at the same time lose nothing: the file is read again under its lock. Throws MailError, with the file
    /// as it was: all 26 letters are taken, the file cannot be written, or its lock is not given up.
    void add(const std::filesystem::path& maildir, std::span<const std::string_view> wanted);

private:
    void place(std::string_view keyword, const std::filesystem::path& maildir);

    std::array<std::string, kMost> keywords_;
};

} // namespace mervo::desk
