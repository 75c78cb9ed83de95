#include "platform/desk/mail/EncodedWord.h"

#include "platform/ascii.h"
#include "platform/desk/charset/Charset.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <optional>

namespace mervo::desk {
namespace {

constexpr std::string_view kBlanks = " \t\r\n";

struct Word {
    std::string_view charset;
    char encoding = 'q';
    std::string_view text;
    std::size_t end = 0; ///< where the text after the word begins
};

/// The encoded word that begins at `at` ("=?charset?q?text?=").
std::optional<Word> wordAt(std::string_view raw, std::size_t at)
{
    Word word;
    const std::size_t charsetEnd = raw.find('?', at + 2);
    if (charsetEnd == std::string_view::npos || charsetEnd + 2 >= raw.size() || raw[charsetEnd + 2] != '?')
        return std::nullopt;
    word.charset = raw.substr(at + 2, charsetEnd - at - 2);
    word.charset = word.charset.substr(0, word.charset.find('*')); // RFC 2231 adds a language
    word.encoding = static_cast<char>(raw[charsetEnd + 1] | 0x20);
    if (word.charset.empty() || (word.encoding != 'q' && word.encoding != 'b'))
        return std::nullopt;
    const std::size_t start = charsetEnd + 3;
    const std::size_t end = raw.find("?=", start);
    if (end == std::string_view::npos)
        return std::nullopt;
    word.text = raw.substr(start, end - start);
    word.end = end + 2;
    return word;
}

int hexDigit(char c)
{
    if (platform::ascii::isDigit(c))
        return c - '0';
    c = static_cast<char>(c | 0x20);
    return c >= 'a' && c <= 'f' ? c - 'a' + 10 : -1;
}

void appendQuoted(std::string& bytes, std::string_view text)
{
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '=' && i + 2 < text.size() && hexDigit(text[i + 1]) >= 0 && hexDigit(text[i + 2]) >= 0) {
            bytes.push_back(static_cast<char>(hexDigit(text[i + 1]) << 4 | hexDigit(text[i + 2])));
            i += 2;
        } else {
            bytes.push_back(text[i] == '_' ? ' ' : text[i]);
        }
    }
}

int base64Digit(char c)
{
    if (platform::ascii::isUpper(c))
        return c - 'A';
    if (platform::ascii::isLower(c))
        return c - 'a' + 26;
    if (platform::ascii::isDigit(c))
        return c - '0' + 52;
    return c == '+' ? 62 : c == '/' ? 63 : -1;
}

void appendBase64(std::string& bytes, std::string_view text)
{
    unsigned bits = 0;
    int count = 0;
    for (const char c : text) {
        const int digit = base64Digit(c);
        if (digit < 0)
            continue;
        bits = (bits << 6 | static_cast<unsigned>(digit)) & 0xFFFF;
        if ((count += 6) >= 8) {
            count -= 8;
            bytes.push_back(static_cast<char>(bits >> count & 0xFF));
        }
    }
}

bool sameCharset(std::string_view a, std::string_view b)
{
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](char x, char y) { return (x | 0x20) == (y | 0x20); });
}

/// Bytes of neighbouring words wait here until the charset changes, so that a character cut in two is whole.
class Decoder {
public:
    void addWord(const Word& word)
    {
        if (!sameCharset(word.charset, charset_))
            flush();
        charset_ = word.charset;
        word.encoding == 'b' ? appendBase64(pending_, word.text) : appendQuoted(pending_, word.text);
    }

    void addText(std::string_view text)
    {
        flush();
        out_ += toUtf8(text, {});
    }

    std::string finish()
    {
        flush();
        return std::move(out_);
    }

private:
    void flush()
    {
        if (!pending_.empty())
            out_ += toUtf8(pending_, charset_);
        pending_.clear();
    }

    std::string out_, pending_;
    std::string_view charset_;
};

std::string decodeWords(std::string_view raw)
{
    Decoder decoder;
    bool afterWord = false;
    std::size_t textStart = 0;
    // No word begins behind the last end of one: else each beginning would be followed to the end of the field.
    const std::size_t lastEnd = raw.rfind("?=");
    const auto next = [&](std::size_t from) {
        const std::size_t at = raw.find("=?", from);
        return lastEnd == std::string_view::npos || at > lastEnd ? std::string_view::npos : at;
    };
    for (std::size_t at = next(0); at != std::string_view::npos; at = next(at)) {
        const std::optional<Word> word = wordAt(raw, at);
        if (!word) {
            at += 2;
            continue;
        }
        const std::string_view between = raw.substr(textStart, at - textStart);
        const bool onlyBlanks = between.find_first_not_of(kBlanks) == std::string_view::npos;
        if (!between.empty() && !(afterWord && onlyBlanks)) // blanks between two words mean nothing
            decoder.addText(between);
        decoder.addWord(*word);
        afterWord = true;
        at = textStart = word->end;
    }
    if (textStart < raw.size())
        decoder.addText(raw.substr(textStart));
    return decoder.finish();
}

bool isControl(char c)
{
    const auto byte = static_cast<unsigned char>(c);
    return byte < 0x20 || byte == 0x7F;
}

/// True when eight bytes are all printable ASCII.
bool arePrintable(std::uint64_t bytes)
{
    constexpr std::uint64_t kOnes = 0x0101010101010101U, kHighs = kOnes * 0x80;
    const std::uint64_t belowSpace = (bytes - kOnes * 0x20) & ~bytes;
    const std::uint64_t isDelete = (bytes ^ kOnes * 0x7F) - kOnes;
    return ((bytes | belowSpace | isDelete) & kHighs) == 0;
}

/// True for a text that decoding leaves as it is. Nearly all fields are: eight bytes are looked at at a time.
bool isPlain(std::string_view raw)
{
    if (raw.find("=?") != std::string_view::npos)
        return false;
    for (; raw.size() >= 8; raw.remove_prefix(8)) {
        std::uint64_t bytes = 0;
        std::memcpy(&bytes, raw.data(), sizeof bytes);
        if (!arePrintable(bytes))
            return false;
    }
    return std::all_of(raw.begin(), raw.end(), [](char c) { return c >= 0x20 && c < 0x7F; });
}

/// The line ends that are no control characters of ASCII, such as U+2028, become blanks as well.
std::string withoutLineEnds(std::string text)
{
    for (const std::string_view end : {"\u0085", "\u2028", "\u2029"}) {
        for (std::size_t at = text.find(end); at != std::string::npos; at = text.find(end, at))
            text.replace(at, end.size(), end.size(), ' ');
    }
    return text;
}

} // namespace

std::string decodeHeaderText(std::string_view raw)
{
    if (isPlain(raw))
        return std::string(raw);
    std::string unfolded;
    unfolded.reserve(raw.size());
    for (const char c : raw) {
        if (c != '\r' && c != '\n')
            unfolded.push_back(c);
    }
    std::string text = unfolded.find("=?") == std::string::npos ? toUtf8(unfolded, {}) : decodeWords(unfolded);
    std::replace_if(text.begin(), text.end(), isControl, ' ');
    return withoutLineEnds(std::move(text));
}

} // namespace mervo::desk
