#include "core/tools/mail/MailBody.h"

#include "core/foundation/Text.h"
#include "platform/ascii.h"
#include "platform/unicode.h"

#include <algorithm>
#include <array>
#include <fmt/format.h>
#include <initializer_list>
#include <re2/re2.h>
#include <utility>

namespace mervo::MailBody {

namespace {

/// Compiled when first used, so that a start-up pays for no pattern. One that cannot be compiled matches nothing.
const re2::RE2::Options& quiet()
{
    static const re2::RE2::Options options = [] {
        re2::RE2::Options made;
        made.set_log_errors(false);
        return made;
    }();
    return options;
}

struct Replacement {
    re2::RE2 pattern;
    std::string_view by;

    Replacement(std::string_view text, std::string_view replacement)
        : pattern(re2::StringPiece(text.data(), text.size()), quiet())
        , by(replacement)
    {
    }
};

template <std::size_t Count>
void replaceAll(std::string& text, const std::array<Replacement, Count>& replacements)
{
    for (const auto& [pattern, by] : replacements) {
        if (pattern.ok())
            re2::RE2::GlobalReplace(&text, pattern, re2::StringPiece(by.data(), by.size()));
    }
}

void replaceAll(std::string& text, std::string_view part, std::string_view by)
{
    std::size_t found = text.find(part);
    if (found == std::string::npos)
        return;
    std::string result;
    std::size_t done = 0;
    for (; found != std::string::npos; found = text.find(part, done)) {
        result.append(text, done, found - done).append(by);
        done = found + part.size();
    }
    result.append(text, done);
    text = std::move(result);
}

bool looksLikeHTML(std::string_view text)
{
    const std::string low = platform::ascii::lowered(text);
    const auto tags = {"<div", "<p>", "<p ", "<table", "<html", "<br", "<span", "<td", "<a "};
    return std::any_of(tags.begin(), tags.end(), [&](const char* tag) { return low.find(tag) != std::string::npos; });
}

void normaliseBlanks(std::string& text)
{
    static const std::array<Replacement, 4> blanks{
        Replacement{"[ \\t]+\\n", "\n"},
        Replacement{"(?m)^[ \\t]+", ""},
        Replacement{"[ \\t]{2,}", " "},
        Replacement{"\\n{3,}", "\n\n"},
    };
    replaceAll(text, blanks);
}

/// Where the quoted history begins: an announcement of it, or the first line that starts with ">".
std::size_t quotedTail(const std::string& text)
{
    // Mail programs put a no-break space before the colon of a French attribution: \p{Z} is part of "blank".
    static const std::array<re2::RE2, 3> attributions{
        re2::RE2("(?m)^On .{0,200}? wrote:[\\s\\p{Z}]*$", quiet()),
        re2::RE2("(?m)^Le .{0,200}?(a écrit|écrit)[\\s\\p{Z}]*:[\\s\\p{Z}]*$", quiet()),
        re2::RE2("(?m)^>.*$", quiet()),
    };
    const std::string low = platform::ascii::lowered(text);
    std::size_t end = text.size();
    for (const auto* mark :
        {"-----original message-----", "-----message d'origine-----", "________________________________"})
        end = std::min(end, low.find(mark));
    for (const auto& pattern : attributions) {
        re2::StringPiece match;
        if (pattern.ok() && pattern.Match(text, 0, text.size(), re2::RE2::UNANCHORED, &match, 1))
            end = std::min(end, static_cast<std::size_t>(match.data() - text.data()));
    }
    return end;
}

/// The longest prefix of whole characters within the cap. A single character can be longer than that (a letter under
/// thousands of accents): then the cut falls between two of its code points.
std::size_t boundaryWithinCap(std::string_view text)
{
    const auto isContinuation = [](char byte) { return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U; };
    std::size_t codePoint = byteCap;
    while (codePoint > 0 && isContinuation(text[codePoint]))
        --codePoint;
    std::size_t end = 0;
    while (true) {
        const std::size_t length = platform::firstCharacterLength(text.substr(end, 2 * byteCap));
        if (length == 0 || end + length > byteCap)
            return end == 0 ? codePoint : end;
        end += length;
    }
}

std::string capped(std::string text)
{
    if (text.size() <= byteCap)
        return text;
    const std::size_t kept = boundaryWithinCap(text);
    const std::size_t cut = text.size() - kept;
    text.resize(kept);
    return text + "\n\n[truncated: " + std::to_string(cut) + " more bytes]";
}

} // namespace

std::string stripHTMLToText(const std::string& text)
{
    static const std::array<Replacement, 6> markup{
        Replacement{"(?is)<script\\b[^>]*>.*?</script>", ""},
        Replacement{"(?is)<style\\b[^>]*>.*?</style>", ""},
        Replacement{"(?is)<head\\b[^>]*>.*?</head>", ""},
        Replacement{"(?s)<!--.*?-->", ""},
        Replacement{"(?i)</(?:p|div|h[1-6]|li)>|<br(?: ?/)?>", "\n"},
        Replacement{"<[^>]+>", ""},
    };
    constexpr std::array<std::pair<std::string_view, std::string_view>, 13> literals{{
        {"&nbsp;", " "},
        {"&amp;", "&"},
        {"&lt;", "<"},
        {"&gt;", ">"},
        {"&quot;", "\""},
        {"&#39;", "'"},
        {"&apos;", "'"},
        {"\u00A0", " "},
        {"\u200B", " "},
        {"\u200C", " "},
        {"\u200D", " "},
        {"\u2060", " "},
        {"\uFEFF", " "},
    }};
    std::string plain = text;
    replaceAll(plain, markup);
    for (const auto& [part, by] : literals)
        replaceAll(plain, part, by);
    normaliseBlanks(plain);
    return plain;
}

namespace {

/// Without markup and with blanks normalised; the quoted history and the signature are still there.
std::string plainText(const std::string& text)
{
    std::string plain = text;
    replaceAll(plain, "\r\n", "\n");
    std::replace(plain.begin(), plain.end(), '\r', '\n');
    if (looksLikeHTML(plain)) {
        plain = stripHTMLToText(plain);
    } else {
        normaliseBlanks(plain);
    }
    return plain;
}

} // namespace

std::string clean(const std::string& text)
{
    std::string plain = plainText(text);
    plain.resize(quotedTail(plain));
    plain.resize(std::min(plain.size(), plain.find("\n-- \n")));
    return capped(std::string(Text::trimmed(plain)));
}

std::vector<std::string> omissions(const std::string& text)
{
    const std::string plain = plainText(text);
    const std::size_t kept = quotedTail(plain);
    if (kept == plain.size())
        return {};
    return {fmt::format("the quoted text at the end was cut: {} of {} bytes", plain.size() - kept, plain.size())};
}

} // namespace mervo::MailBody
