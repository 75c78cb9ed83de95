#include "platform/applescript/values/TextRules.h"

#include "platform/applescript/values/Limits.h"
#include "platform/ascii.h"
#include "platform/unicode.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <memory>

namespace mervo::applescript {

namespace {

using platform::ascii::isDigit;
using platform::ascii::lower;
using platform::ascii::lowered;

/// Places of ASCII in dictionary order: spaces, signs, digits, letters; whatever is not ASCII comes after.
constexpr std::array<unsigned char, 256> kWeights = [] {
    std::array<unsigned char, 256> weights{};
    for (int c = 0; c < 256; ++c) {
        const bool digit = c >= '0' && c <= '9';
        const bool letter = c >= 'a' && c <= 'z';
        const bool capital = c >= 'A' && c <= 'Z';
        const int weight = digit ? 100 + c - '0' : letter ? 110 + c - 'a' : capital ? 110 + c - 'A' : 0;
        // The 66 other characters of ASCII keep their own order below the digits.
        const int shift = c > 'Z' ? (c > 'z' ? 62 : 36) : c > '9' ? 10 : 0;
        weights[static_cast<std::size_t>(c)] = static_cast<unsigned char>(c >= 128 ? c
                : weight != 0                                                      ? weight
                                                                                   : c - shift);
    }
    return weights;
}();

/// In linear time, whatever the texts are; std::string_view::find is quadratic at worst.
std::size_t findBytes(std::string_view text, std::string_view part, std::size_t from = 0) noexcept
{
    if (from > text.size())
        return std::string_view::npos;
    const void* found = memmem(text.data() + from, text.size() - from, part.data(), part.size());
    return found ? static_cast<std::size_t>(static_cast<const char*>(found) - text.data()) : std::string_view::npos;
}

constexpr std::size_t kShortPart = 64; // found without a copy: the work is at most so many times the text's length

bool containsIgnoringCase(std::string_view text, std::string_view part)
{
    if (part.empty() || part.size() > text.size())
        return part.empty();
    if (part.size() > kShortPart)
        return findBytes(lowered(text), lowered(part)) != std::string_view::npos;
    const char first = lower(part.front());
    for (std::size_t i = 0; i + part.size() <= text.size(); ++i) {
        if (lower(text[i]) == first && platform::ascii::equalsIgnoringCase(text.substr(i, part.size()), part))
            return true;
    }
    return false;
}

bool isIgnored(char c, const TextRules& rules) noexcept
{
    if (!rules.whiteSpace && std::strchr(" \t\r\n", c))
        return true;
    if (!rules.hyphens && c == '-')
        return true;
    return !rules.punctuation && std::strchr(".,?:;!\\'\"`", c);
}

/// The form in which texts are compared byte by byte under the rules, numbers apart.
std::string keyOf(std::string_view text, const TextRules& rules)
{
    Limits::passed(text.size());
    std::string kept;
    const bool dropsSome = !rules.whiteSpace || !rules.hyphens || !rules.punctuation;
    if (dropsSome) {
        std::copy_if(text.begin(), text.end(), std::back_inserter(kept),
            [&](char c) { return c == '\0' || !isIgnored(c, rules); });
        text = kept;
    }
    if (rules.letterCase && rules.diacriticals)
        return platform::composed(text);
    std::string folded = rules.letterCase ? std::string(text) : platform::foldCase(text);
    if (rules.diacriticals)
        return folded;
    return platform::withoutMarks(folded);
}

/// The key of a text: kept with the text under the default rules, else made here.
class Key {
public:
    Key(const Text& text, const TextRules& rules)
        : own_(rules.areDefault() ? std::string() : keyOf(text.view(), rules))
        , view_(rules.areDefault() ? text.folded() : std::string_view(own_))
    {
    }
    Key(const Key&) = delete;
    Key& operator=(const Key&) = delete;
    ~Key() = default;
    std::string_view view() const noexcept { return view_; }

private:
    std::string own_;
    std::string_view view_;
};

std::size_t digitsAt(std::string_view text, std::size_t from) noexcept
{
    std::size_t end = from;
    while (end < text.size() && isDigit(text[end]))
        ++end;
    return end - from;
}

int compareDigits(std::string_view left, std::string_view right) noexcept
{
    left.remove_prefix(std::min(left.find_first_not_of('0'), left.size()));
    right.remove_prefix(std::min(right.find_first_not_of('0'), right.size()));
    if (left.size() != right.size())
        return left.size() < right.size() ? -1 : 1;
    return left.compare(right);
}

int compareWeights(std::string_view left, std::string_view right, bool asNumbers) noexcept
{
    std::size_t i = 0;
    std::size_t k = 0;
    while (i < left.size() && k < right.size()) {
        if (asNumbers && isDigit(left[i]) && isDigit(right[k])) {
            const std::size_t leftDigits = digitsAt(left, i);
            const std::size_t rightDigits = digitsAt(right, k);
            if (const int result = compareDigits(left.substr(i, leftDigits), right.substr(k, rightDigits)))
                return result;
            i += leftDigits;
            k += rightDigits;
            continue;
        }
        const int difference =
            kWeights[static_cast<unsigned char>(left[i])] - kWeights[static_cast<unsigned char>(right[k])];
        if (difference != 0)
            return difference;
        ++i;
        ++k;
    }
    return static_cast<int>(i < left.size()) - static_cast<int>(k < right.size());
}

bool areAscii(const Text& left, const Text& right) noexcept
{
    return left.isAscii() && right.isAscii();
}

/// A text's key with the way back: for every unit (a code point with the marks on it) where it begins in the key and
/// in the text. A match counts only from one unit's beginning to another's.
struct MappedKey {
    MappedKey(const Text& text, const TextRules& rules)
        : MappedKey(text.view().size() * 8)
    {
        std::string_view rest = text.view();
        while (!rest.empty()) {
            std::size_t length = platform::firstCharacterLength(rest);
            if (rest.substr(0, length) == "\r\n")
                length = 1;
            keyStarts.push_back(static_cast<std::uint32_t>(key.size()));
            textStarts.push_back(static_cast<std::uint32_t>(text.view().size() - rest.size()));
            key += keyOf(rest.substr(0, length), rules);
            Limits::step();
            rest.remove_prefix(length);
        }
        keyStarts.push_back(static_cast<std::uint32_t>(key.size()));
        textStarts.push_back(static_cast<std::uint32_t>(text.view().size()));
    }
    MappedKey(const MappedKey&) = delete;
    MappedKey& operator=(const MappedKey&) = delete;
    ~MappedKey() { Limits::discharge(charged); }

    /// The unit that begins (first: of several, the first) at a place of the key; npos when none does.
    std::size_t unitAt(std::size_t place, bool first) const
    {
        const auto range = std::equal_range(keyStarts.begin(), keyStarts.end(), static_cast<std::uint32_t>(place));
        if (range.first == range.second)
            return std::string::npos;
        return static_cast<std::size_t>((first ? range.first : range.second - 1) - keyStarts.begin());
    }

    std::string key;
    std::vector<std::uint32_t> keyStarts;
    std::vector<std::uint32_t> textStarts;

private:
    explicit MappedKey(std::size_t bytes)
        : charged(bytes)
    {
        Limits::charge(bytes);
    }

    std::size_t charged;
};

TextRange findMapped(const MappedKey& text, std::string_view part, std::size_t from)
{
    // From the last of the units that begin here: ignored characters in front are not part of a match.
    const auto start =
        std::lower_bound(text.textStarts.begin(), text.textStarts.end(), static_cast<std::uint32_t>(from));
    std::size_t place = text.keyStarts[static_cast<std::size_t>(start - text.textStarts.begin())];
    while ((place = findBytes(text.key, part, place)) != std::string::npos) {
        const std::size_t first = text.unitAt(place, false);
        const std::size_t end = text.unitAt(place + part.size(), true);
        if (first != std::string::npos && end != std::string::npos)
            return {text.textStarts[first], text.textStarts[end]};
        Limits::passed(part.size());
        place = *std::upper_bound(text.keyStarts.begin(), text.keyStarts.end(), static_cast<std::uint32_t>(place));
    }
    return {std::string::npos, std::string::npos};
}

} // namespace

bool areEqual(const Text& left, const Text& right, const TextRules& rules)
{
    Limits::passed(std::min(left.view().size(), right.view().size()));
    if (rules.areDefault() && areAscii(left, right))
        return platform::ascii::equalsIgnoringCase(left.view(), right.view());
    if (rules.numericStrings)
        return compareWeights(keyOf(left.view(), rules), keyOf(right.view(), rules), true) == 0;
    return Key(left, rules).view() == Key(right, rules).view();
}

int order(const Text& left, const Text& right, const TextRules& rules)
{
    Limits::passed(std::min(left.view().size(), right.view().size()));
    if (rules.areDefault() && areAscii(left, right))
        return compareWeights(left.view(), right.view(), false);
    TextRules base = rules;
    base.letterCase = false;
    base.diacriticals = false;
    if (const int result = compareWeights(keyOf(left.view(), base), keyOf(right.view(), base), rules.numericStrings))
        return result;
    base.diacriticals = rules.diacriticals;
    if (const int result = compareWeights(keyOf(left.view(), base), keyOf(right.view(), base), rules.numericStrings))
        return result;
    // Small letters before capitals: ASCII has them the other way round.
    return rules.letterCase ? -keyOf(left.view(), rules).compare(keyOf(right.view(), rules)) : 0;
}

bool contains(const Text& text, const Text& part, const TextRules& rules)
{
    Limits::passed(text.view().size());
    if (rules.areDefault() && areAscii(text, part))
        return containsIgnoringCase(text.view(), part.view());
    return findBytes(Key(text, rules).view(), Key(part, rules).view()) != std::string_view::npos;
}

bool startsWith(const Text& text, const Text& part, const TextRules& rules)
{
    if (rules.areDefault() && areAscii(text, part))
        return platform::ascii::equalsIgnoringCase(text.view().substr(0, part.view().size()), part.view());
    return Key(text, rules).view().starts_with(Key(part, rules).view());
}

bool endsWith(const Text& text, const Text& part, const TextRules& rules)
{
    if (rules.areDefault() && areAscii(text, part)) {
        const std::size_t length = part.view().size();
        return length <= text.view().size()
            && platform::ascii::equalsIgnoringCase(text.view().substr(text.view().size() - length), part.view());
    }
    return Key(text, rules).view().ends_with(Key(part, rules).view());
}

std::vector<TextRange> findAll(
    const Text& text, std::span<const Ref<Text>> parts, const TextRules& rules, std::size_t most)
{
    const bool isPlain = text.isAscii() && rules.diacriticals && rules.whiteSpace && rules.hyphens && rules.punctuation
        && std::all_of(parts.begin(), parts.end(), [](const Ref<Text>& part) { return part->isAscii(); });
    const std::unique_ptr<MappedKey> key = isPlain ? nullptr : std::make_unique<MappedKey>(text, rules);
    const auto plainKey = [&](const Text& of) {
        return rules.letterCase ? std::string(of.view()) : lowered(of.view());
    };
    const std::string plainText = isPlain ? plainKey(text) : std::string();
    struct Part {
        std::string key;
        TextRange next;
    };
    std::vector<Part> sought;
    for (const Ref<Text>& part : parts) {
        if (std::string partKey = isPlain ? plainKey(*part) : keyOf(part->view(), rules); !partKey.empty())
            sought.push_back({std::move(partKey), {}});
    }

    const auto find = [&](const Part& part, std::size_t from) -> TextRange {
        if (!isPlain)
            return findMapped(*key, part.key, from);
        const std::size_t start = findBytes(plainText, part.key, from);
        return {start, start == std::string::npos ? start : start + part.key.size()};
    };
    std::vector<TextRange> found;
    for (Part& part : sought)
        part.next = find(part, 0);
    while (found.size() < most) {
        const Part* best = nullptr;
        for (const Part& part : sought) {
            if (part.next.start != std::string::npos
                && (!best || part.next.start < best->next.start
                    || (part.next.start == best->next.start && part.next.end > best->next.end)))
                best = &part;
        }
        if (!best)
            break;
        Limits::step();
        found.push_back(best->next);
        for (Part& part : sought) {
            if (part.next.start < found.back().end)
                part.next = find(part, found.back().end);
        }
    }
    return found;
}

} // namespace mervo::applescript
