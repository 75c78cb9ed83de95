#include "platform/desk/notebook/TagReader.h"

#include "platform/ascii.h"
#include "platform/unicode.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace mervo::desk {
namespace {

constexpr std::string_view kBlanks = " \t\n\r\f";
constexpr std::size_t kDeepest = 200; // elements within each other in a plain document
constexpr std::size_t kLongestName = 16;

bool isNameCharacter(char c)
{
    return platform::ascii::isLetter(c) || platform::ascii::isDigit(c) || c == '-';
}

std::string_view withoutBlanks(std::string_view text)
{
    const std::size_t start = text.find_first_not_of(kBlanks);
    return start == std::string_view::npos ? std::string_view() : text.substr(start);
}

bool skip(std::string_view& text, std::string_view wanted)
{
    if (text.size() < wanted.size())
        return false;
    for (std::size_t i = 0; i < wanted.size(); ++i) {
        if (platform::ascii::lower(text[i]) != wanted[i])
            return false;
    }
    text.remove_prefix(wanted.size());
    return true;
}

/// A name in lower case, kept without taking memory.
struct TagName {
    std::array<char, kLongestName> letters{};
    std::size_t length = 0;

    std::string_view view() const { return {letters.data(), length}; }
};

/// The name at the start of a text, which loses it. Empty when there is none, or one that no tag known here has.
TagName takeName(std::string_view& text)
{
    TagName name;
    std::size_t end = 0;
    while (end < text.size() && isNameCharacter(text[end])) {
        if (end < kLongestName)
            name.letters[end] = platform::ascii::lower(text[end]);
        ++end;
    }
    name.length = end <= kLongestName ? end : 0;
    text.remove_prefix(end);
    return name;
}

int headingLevel(std::string_view name)
{
    return name.size() == 2 && name[0] == 'h' ? name[1] - '0' : 0;
}

struct Entity {
    std::string_view name;
    std::string_view text;
};

constexpr Entity kEntities[] = {
    {"amp;", "&"}, {"lt;", "<"}, {"gt;", ">"}, {"quot;", "\""}, {"apos;", "'"}, {"nbsp;", "\u00a0"}};

void appendUtf8(std::string& to, std::uint32_t point)
{
    if (point < 0x80) {
        to += static_cast<char>(point);
    } else if (point < 0x800) {
        to += static_cast<char>(0xC0 | point >> 6);
        to += static_cast<char>(0x80 | (point & 0x3F));
    } else if (point < 0x10000) {
        to += static_cast<char>(0xE0 | point >> 12);
        to += static_cast<char>(0x80 | (point >> 6 & 0x3F));
        to += static_cast<char>(0x80 | (point & 0x3F));
    } else {
        to += static_cast<char>(0xF0 | point >> 18);
        to += static_cast<char>(0x80 | (point >> 12 & 0x3F));
        to += static_cast<char>(0x80 | (point >> 6 & 0x3F));
        to += static_cast<char>(0x80 | (point & 0x3F));
    }
}

/// The number behind "&#", which the text loses with its semicolon. Nothing for one that stands for no character of
/// its own: HTML puts another one in the place of some.
std::optional<std::uint32_t> takeNumber(std::string_view& text)
{
    const bool isHex = text.size() > 1 && platform::ascii::lower(text[0]) == 'x';
    const char* const start = text.data() + (isHex ? 1 : 0);
    const char* const last = text.data() + text.size();
    std::uint32_t point = 0;
    const auto [end, error] = std::from_chars(start, last, point, isHex ? 16 : 10);
    const bool isCharacter = point >= 0x20 && point <= 0x10FFFF && (point < 0x7F || point >= 0xA0)
        && (point < 0xD800 || point > 0xDFFF) && (point & 0xFFFE) != 0xFFFE && (point < 0xFDD0 || point > 0xFDEF);
    if (error != std::errc() || end == last || *end != ';' || !isCharacter)
        return std::nullopt;
    text.remove_prefix(static_cast<std::size_t>(end + 1 - text.data()));
    return point;
}

/// What stands behind an "&" that the text has lost already; nothing when it is no entity that is known here.
std::optional<std::string> takeEntity(std::string_view& text)
{
    for (const Entity& entity : kEntities) {
        if (text.starts_with(entity.name)) {
            text.remove_prefix(entity.name.size());
            return std::string(entity.text);
        }
    }
    std::string_view number = text.substr(text.starts_with('#') ? 1 : 0);
    if (number.size() == text.size())
        return std::nullopt;
    const auto point = takeNumber(number);
    if (!point)
        return std::nullopt;
    text = number;
    std::string decoded;
    appendUtf8(decoded, *point);
    return decoded;
}

/// Whether a parser would put something else in the place of a character: of controls and of noncharacters, by their
/// bytes in UTF-8, which is valid.
bool holdsReplaced(std::string_view html)
{
    for (std::size_t i = 0; i < html.size(); ++i) {
        if (html[i] >= 0x20 && html[i] < 0x7F)
            continue;
        const auto byte = [&](std::size_t at) { return at < html.size() ? static_cast<unsigned char>(html[at]) : 0U; };
        const unsigned lead = byte(i);
        const bool isControl = (lead < 0x20 && kBlanks.find(html[i]) == std::string_view::npos) || lead == 0x7F
            || (lead == 0xC2 && byte(i + 1) < 0xA0);
        const bool isNone = (lead == 0xEF && (byte(i + 1) == 0xB7 || (byte(i + 1) == 0xBF && byte(i + 2) >= 0xBE)))
            || (lead >= 0xF0 && byte(i + 2) == 0xBF && byte(i + 3) >= 0xBE);
        if (isControl || isNone)
            return true;
    }
    return false;
}

/// A tag of a plain document.
struct PlainTag {
    TagName name;
    HtmlTag tag = HtmlTag::other;
    bool isEnd = false;
};

class PlainReader {
public:
    PlainReader(std::string_view html, HtmlSink& sink)
        : rest_(html)
        , sink_(sink)
    {
    }

    bool read()
    {
        skipPreamble();
        while (!rest_.empty()) {
            std::size_t end = 0;
            while (end < rest_.size() && rest_[end] != '<' && rest_[end] != '&')
                ++end;
            if (end > 0)
                sink_.text(rest_.substr(0, end));
            rest_.remove_prefix(end);
            if (!rest_.empty() && !(rest_[0] == '<' ? readTag() : readReference()))
                return false;
        }
        return open_.empty();
    }

private:
    void skipPreamble()
    {
        std::string_view rest = withoutBlanks(rest_);
        if (skip(rest, "<!doctype html>"))
            rest_ = rest = withoutBlanks(rest);
        if (skip(rest, "<meta charset=\"utf-8\">"))
            rest_ = withoutBlanks(rest);
    }

    bool readReference()
    {
        rest_.remove_prefix(1);
        if (rest_.empty() || kBlanks.find(rest_[0]) != std::string_view::npos) {
            sink_.text("&");
            return true;
        }
        const auto decoded = takeEntity(rest_);
        if (decoded)
            sink_.text(*decoded);
        return decoded.has_value();
    }

    bool readTag()
    {
        rest_.remove_prefix(1);
        PlainTag found;
        found.isEnd = skip(rest_, "/");
        found.name = takeName(rest_);
        found.tag = htmlTag(found.name.view());
        if (!isPlain(found) || !readAttributes(found))
            return false;
        return found.isEnd ? close(found) : open(found);
    }

    /// Block elements without rules of their own, lists, headings, and those that only dress a text.
    static bool isPlain(const PlainTag& found)
    {
        const std::string_view name = found.name.view();
        switch (found.tag) {
        case HtmlTag::other:
            return name == "span" || name == "font" || name == "u";
        case HtmlTag::block:
            return name == "div";
        case HtmlTag::lineBreak:
            return !found.isEnd;
        case HtmlTag::struck:
            return name != "del";
        case HtmlTag::paragraph:
        case HtmlTag::heading:
        case HtmlTag::bold:
        case HtmlTag::italic:
        case HtmlTag::code:
        case HtmlTag::link:
        case HtmlTag::bulletList:
        case HtmlTag::numberedList:
        case HtmlTag::item:
            return true;
        case HtmlTag::rule:
        case HtmlTag::preformatted:
        case HtmlTag::row:
        case HtmlTag::cell:
        case HtmlTag::unseen:
            return false;
        }
        return false;
    }

    /// NAME="VALUE" as often as there is, up to the end of the tag. Keeps the first href.
    bool readAttributes(const PlainTag& found)
    {
        href_.reset();
        for (;;) {
            const bool isParted = !rest_.empty() && kBlanks.find(rest_[0]) != std::string_view::npos;
            rest_ = withoutBlanks(rest_);
            if (found.tag == HtmlTag::lineBreak && rest_.starts_with("/>"))
                rest_.remove_prefix(1);
            if (rest_.starts_with('>')) {
                rest_.remove_prefix(1);
                return true;
            }
            if (!isParted || found.isEnd || !readAttribute())
                return false;
        }
    }

    bool readAttribute()
    {
        const TagName name = takeName(rest_);
        if (name.length == 0 || !skip(rest_, "=\""))
            return false;
        const std::size_t end = rest_.find('"');
        if (end == std::string_view::npos)
            return false;
        const std::string_view value = rest_.substr(0, end);
        rest_.remove_prefix(end + 1);
        if (name.view() == "href" && !href_)
            href_ = value;
        return value.find_first_of("&\r") == std::string_view::npos;
    }

    /// Whether the rules of HTML would leave the new element where it is written.
    bool fits(const PlainTag& found) const
    {
        const auto isWithin = [&](HtmlTag tag) {
            return std::ranges::any_of(open_, [tag](const auto& each) { return each.first == tag; });
        };
        switch (found.tag) {
        case HtmlTag::item:
            return !open_.empty()
                && (open_.back().first == HtmlTag::bulletList || open_.back().first == HtmlTag::numberedList)
                && !isWithin(HtmlTag::paragraph);
        case HtmlTag::heading:
            return !isWithin(HtmlTag::heading) && !isWithin(HtmlTag::paragraph);
        case HtmlTag::block:
        case HtmlTag::paragraph:
        case HtmlTag::bulletList:
        case HtmlTag::numberedList:
            return !isWithin(HtmlTag::paragraph);
        case HtmlTag::link:
            return !isWithin(HtmlTag::link);
        default:
            return true;
        }
    }

    bool open(const PlainTag& found)
    {
        if (!fits(found) || open_.size() >= kDeepest)
            return false;
        sink_.open({found.tag, headingLevel(found.name.view()), href_.value_or("")});
        if (found.tag == HtmlTag::lineBreak) {
            sink_.close(found.tag);
        } else {
            open_.emplace_back(found.tag, found.name);
        }
        return true;
    }

    bool close(const PlainTag& found)
    {
        if (open_.empty() || open_.back().second.view() != found.name.view())
            return false;
        open_.pop_back();
        sink_.close(found.tag);
        return true;
    }

    std::string_view rest_;
    HtmlSink& sink_;
    std::vector<std::pair<HtmlTag, TagName>> open_;
    std::optional<std::string_view> href_;
};

class LenientReader {
public:
    LenientReader(std::string_view html, HtmlSink& sink)
        : rest_(html)
        , sink_(sink)
    {
    }

    void read()
    {
        while (!rest_.empty()) {
            const std::size_t end = std::min(rest_.find_first_of(std::string_view("<&\0", 3)), rest_.size());
            if (end > 0)
                sink_.text(rest_.substr(0, end));
            rest_.remove_prefix(end);
            if (!rest_.empty())
                readMark();
        }
    }

private:
    void readMark()
    {
        const char mark = rest_[0];
        rest_.remove_prefix(1);
        if (mark == '<') {
            readTag();
        } else if (mark == '&') {
            sink_.text(takeEntity(rest_).value_or("&"));
        }
    }

    void readTag()
    {
        if (skip(rest_, "!--")) {
            skipPast("-->", hasNoEndOfComment_);
            return;
        }
        const bool isEnd = skip(rest_, "/");
        if (rest_.empty() || !(platform::ascii::isLetter(rest_[0]) || rest_[0] == '!' || rest_[0] == '?')) {
            sink_.text(isEnd ? "</" : "<");
            return;
        }
        const TagName name = takeName(rest_);
        const HtmlTag tag = htmlTag(name.view());
        skipPast(">", hasNoEndOfTag_);
        if (name.view() == "script" || name.view() == "style") {
            if (!isEnd)
                skipPast(name.view() == "script" ? "</script" : "</style", hasNoEndOfScript_);
        } else if (isEnd) {
            sink_.close(tag);
        } else {
            sink_.open({tag, headingLevel(name.view()), {}});
        }
    }

    /// Up to behind the end; where there is none, nothing is skipped and it is not searched for again.
    void skipPast(std::string_view end, bool& hasNone)
    {
        const std::size_t found = hasNone ? std::string_view::npos : rest_.find(end);
        hasNone = found == std::string_view::npos;
        if (!hasNone)
            rest_.remove_prefix(found + end.size());
    }

    std::string_view rest_;
    HtmlSink& sink_;
    bool hasNoEndOfComment_ = false, hasNoEndOfTag_ = false, hasNoEndOfScript_ = false;
};

} // namespace

bool readPlainHtml(std::string_view html, HtmlSink& sink)
{
    if (!platform::isValidUtf8(html) || holdsReplaced(html))
        return false;
    return PlainReader(html, sink).read();
}

void readLeniently(std::string_view html, HtmlSink& sink)
{
    LenientReader(html, sink).read();
}

} // namespace mervo::desk
