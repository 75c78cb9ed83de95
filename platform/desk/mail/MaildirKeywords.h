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

    /// A missing or unreadable file has no keywords; malformed lines are skipped.
    static MaildirKeywords read(const std::filesystem::path& maildir);

    /// The letter of a keyword; 0 when it has none here.
    char letter(std::string_view keyword) const noexcept;
    /// The keyword of a letter from "a" to "z"; empty when it has none.
    std::string_view keyword(char letter) const noexcept;

    /// Assigns letters to those of the wanted keywords that have none, in the file too. The file is read again under
    /// its lock, so that no other program's entry is lost. Throws MailError and leaves the file as it was when all 26
    /// letters are taken, the file cannot be written, or another program holds the lock.
    void add(const std::filesystem::path& maildir, std::span<const std::string_view> wanted);

private:
    void place(std::string_view keyword, const std::filesystem::path& maildir);

    std::array<std::string, kMost> keywords_;
};

} // namespace mervo::desk
