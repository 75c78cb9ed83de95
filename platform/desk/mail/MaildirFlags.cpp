#include "platform/desk/mail/MaildirFlags.h"

#include <algorithm>
#include <array>
#include <vector>

namespace mervo::desk {
namespace {

constexpr std::array<std::string_view, 3> kColourBits{"$MailFlagBit0", "$MailFlagBit1", "$MailFlagBit2"};
constexpr std::string_view kJunk = "$Junk", kNotJunk = "$NotJunk";

/// The letters of an info, and what stands behind them.
class Letters {
public:
    explicit Letters(std::string_view info)
        : letters_(info.substr(0, info.find(',')))
        , rest_(info.substr(letters_.size()))
    {
    }

    void remove(char letter) { std::erase(letters_, letter); }
    void add(char letter)
    {
        if (letter != 0)
            letters_ += letter;
    }
    void set(char letter, std::optional<bool> on)
    {
        if (!on)
            return;
        remove(letter);
        if (*on)
            add(letter);
    }
    std::string info()
    {
        std::sort(letters_.begin(), letters_.end());
        letters_.erase(std::unique(letters_.begin(), letters_.end()), letters_.end());
        return letters_ + rest_;
    }

private:
    std::string letters_, rest_;
};

bool has(std::string_view info, char letter) noexcept
{
    return letter != 0 && info.substr(0, info.find(',')).find(letter) != std::string_view::npos;
}

bool isKeyword(char letter) noexcept
{
    return letter >= 'a' && letter <= 'z';
}

bool isBit(int colour, std::size_t bit) noexcept
{
    return colour > 0 && (static_cast<unsigned>(colour) >> bit & 1U) != 0;
}

std::vector<std::string_view> neededKeywords(const FlagChange& change)
{
    std::vector<std::string_view> needed;
    for (std::size_t bit = 0; bit < kColourBits.size(); ++bit) {
        if (isBit(change.colour.value_or(kNoColour), bit))
            needed.push_back(kColourBits[bit]);
    }
    if (change.junk)
        needed.push_back(*change.junk ? kJunk : kNotJunk);
    return needed;
}

} // namespace

std::uint8_t MaildirFlags::bits() const noexcept
{
    return static_cast<std::uint8_t>(draft | flagged << 1 | passed << 2 | replied << 3 | seen << 4 | trashed << 5);
}

MaildirFlags MaildirFlags::fromBits(std::uint8_t bits) noexcept
{
    return {.draft = (bits & 1) != 0,
        .flagged = (bits & 2) != 0,
        .passed = (bits & 4) != 0,
        .replied = (bits & 8) != 0,
        .seen = (bits & 16) != 0,
        .trashed = (bits & 32) != 0};
}

MaildirFlags maildirFlags(std::string_view info) noexcept
{
    const auto has = [info](char letter) { return info.find(letter) != std::string_view::npos; };
    return {.draft = has('D'),
        .flagged = has('F'),
        .passed = has('P'),
        .replied = has('R'),
        .seen = has('S'),
        .trashed = has('T')};
}

int messageColour(std::string_view info, const MaildirKeywords& keywords) noexcept
{
    if (!has(info, 'F'))
        return kNoColour;
    int colour = 0;
    for (std::size_t bit = 0; bit < kColourBits.size(); ++bit)
        colour |= has(info, keywords.letter(kColourBits[bit])) ? 1 << bit : 0;
    return colour > kLastColour ? 0 : colour;
}

std::optional<bool> junkMark(std::string_view info, const MaildirKeywords& keywords) noexcept
{
    if (has(info, keywords.letter(kJunk)))
        return true;
    return has(info, keywords.letter(kNotJunk)) ? std::optional(false) : std::nullopt;
}

std::string changedInfo(
    std::string_view info, const FlagChange& change, const std::filesystem::path& maildir, MaildirKeywords& keywords)
{
    keywords.add(maildir, neededKeywords(change));
    Letters letters(info);
    letters.set('S', change.seen);
    letters.set('R', change.replied);
    letters.set('P', change.passed);
    letters.set('T', change.trashed);
    letters.set('F', change.flagged);
    if (change.colour)
        letters.set('F', *change.colour != kNoColour);
    if (change.colour || change.flagged == false) {
        for (std::size_t bit = 0; bit < kColourBits.size(); ++bit)
            letters.set(keywords.letter(kColourBits[bit]), isBit(change.colour.value_or(kNoColour), bit));
    }
    if (change.junk) {
        letters.set(keywords.letter(kJunk), *change.junk);
        letters.set(keywords.letter(kNotJunk), !*change.junk);
    }
    return letters.info();
}

std::string translatedInfo(
    std::string_view info, const MaildirKeywords& from, const std::filesystem::path& destination, MaildirKeywords& to)
{
    const std::string_view old = info.substr(0, info.find(','));
    if (std::none_of(old.begin(), old.end(), isKeyword))
        return std::string(info);
    Letters letters(info);
    for (const char letter : old) {
        if (isKeyword(letter))
            letters.remove(letter);
    }
    for (const char letter : old) {
        const std::string_view keyword = from.keyword(letter);
        if (keyword.empty() || (to.letter(keyword) == 0 && !to.keyword('z').empty()))
            continue;
        to.add(destination, std::array{keyword});
        letters.add(to.letter(keyword));
    }
    for (const char letter : old) { // no keywords of Dovecot's: they stay where they would not mean one
        if (isKeyword(letter) && from.keyword(letter).empty() && to.keyword(letter).empty())
            letters.add(letter);
    }
    return letters.info();
}

} // namespace mervo::desk
