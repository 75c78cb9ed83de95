#pragma once

#include "platform/desk/mail/MaildirKeywords.h"

#include <compare>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

/// A message's flags, colour and junk mark as they stand in its file's name after ":2,", the info: capital letters are
/// Maildir's own flags, small ones keywords (see MaildirKeywords). The colour is three bits of keywords, the junk mark
/// is one of two. Letters that are unknown here are kept.
namespace mervo::desk {

/// Maildir's own flags.
struct MaildirFlags {
    bool draft = false, flagged = false, passed = false, replied = false, seen = false, trashed = false;
    auto operator<=>(const MaildirFlags&) const = default;

    std::uint8_t bits() const noexcept; ///< one byte, for the index
    static MaildirFlags fromBits(std::uint8_t bits) noexcept;
};

MaildirFlags maildirFlags(std::string_view info) noexcept;

/// The changes to make; members that are not set stay as they are.
struct FlagChange {
    std::optional<bool> seen = {}, flagged = {}, replied = {}, passed = {}, trashed = {};
    std::optional<bool> junk = {}; ///< false marks it as not junk, also within the junk mailbox
    std::optional<int> colour = {}; ///< 0 red to 6 gray, which flags the message as well; -1 takes flag and colour away
};

inline constexpr int kNoColour = -1, kLastColour = 6;

/// kNoColour for a message that is not flagged; 0 for one that is flagged without a colour.
int messageColour(std::string_view info, const MaildirKeywords& keywords) noexcept;

/// How the message was marked; nothing when it never was.
std::optional<bool> junkMark(std::string_view info, const MaildirKeywords& keywords) noexcept;

/// `info` after the change: letters in order of their codes, unknown ones kept, and so is what stands behind a comma.
/// Keywords that the Maildir has no letter for yet are added there. Throws MailError.
std::string changedInfo(
    std::string_view info, const FlagChange& change, const std::filesystem::path& maildir, MaildirKeywords& keywords);

/// `info` for another Maildir, where a keyword may have another letter. Keywords for which no letter is left there are
/// dropped. Throws MailError.
std::string translatedInfo(
    std::string_view info, const MaildirKeywords& from, const std::filesystem::path& destination, MaildirKeywords& to);

} // namespace mervo::desk
