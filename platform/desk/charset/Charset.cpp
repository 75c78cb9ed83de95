#include "platform/desk/charset/Charset.h"

#include "platform/ascii.h"
#include "platform/unicode.h"

#include <array>
#include <cerrno>
#include <cstdint>
#include <iconv.h>
#include <utility>

namespace mervo::desk {
namespace {

constexpr std::string_view kReplacement = "\xEF\xBF\xBD";

/// 0x80 to 0x9F of windows-1252; the holes stay control characters, as browsers do it.
constexpr std::array<std::uint16_t, 32> kWindows1252 = {0x20AC, 0x81, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,
    0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0x8D, 0x017D, 0x8F, 0x90, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013,
    0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x9D, 0x017E, 0x0178};

std::string fromWindows1252(std::string_view bytes)
{
    std::string out;
    out.reserve(bytes.size() * 2);
    for (const unsigned char c : bytes) {
        const unsigned code = c >= 0x80 && c < 0xA0 ? kWindows1252[c - 0x80U] : c;
        if (code < 0x80) {
            out.push_back(static_cast<char>(code));
        } else if (code < 0x800) {
            out.push_back(static_cast<char>(0xC0 | code >> 6));
            out.push_back(static_cast<char>(0x80 | (code & 0x3F)));
        } else {
            out.push_back(static_cast<char>(0xE0 | code >> 12));
            out.push_back(static_cast<char>(0x80 | (code >> 6 & 0x3F)));
            out.push_back(static_cast<char>(0x80 | (code & 0x3F)));
        }
    }
    return out;
}

/// Names that mail uses for what iconv calls otherwise, or where senders mean a larger set than they name.
constexpr std::pair<std::string_view, std::string_view> kOtherNames[] = {{"gb2312", "gb18030"}, {"gbk", "gb18030"},
    {"ks_c_5601-1987", "cp949"}, {"euc-kr", "cp949"}, {"shift_jis", "cp932"}, {"shift-jis", "cp932"},
    {"x-sjis", "cp932"}, {"big5", "big5-hkscs"}, {"iso-2022-jp", "iso-2022-jp-3"}, {"x-gbk", "gb18030"},
    {"windows-31j", "cp932"}, {"iso-8859-8-i", "iso-8859-8"}, {"unicode-1-1-utf-7", "utf-7"}, {"cp-850", "cp850"},
    {"x-mac-roman", "macintosh"}, {"macroman", "macintosh"}};

std::string normalName(std::string_view charset)
{
    std::string name;
    for (const char c : charset) {
        const bool plain = platform::ascii::isLetter(c) || platform::ascii::isDigit(c);
        if (!plain && c != '-' && c != '_' && c != '.' && c != ':')
            return {}; // "//TRANSLIT" and the like are none of a message's business
        name.push_back(platform::ascii::lower(c));
    }
    for (const auto& [mail, iconvName] : kOtherNames) {
        if (name == mail)
            return std::string(iconvName);
    }
    return name;
}

class Converter {
public:
    explicit Converter(const std::string& charset)
        : handle_(charset.size() > 40 ? kNone : iconv_open("UTF-8", charset.c_str()))
    {
    }
    Converter(const Converter&) = delete;
    Converter& operator=(const Converter&) = delete;
    ~Converter()
    {
        if (known())
            iconv_close(handle_);
    }

    bool known() const noexcept { return handle_ != kNone; }

    std::string convert(std::string_view bytes)
    {
        std::string input(bytes), out;
        char* from = input.data();
        std::size_t left = input.size();
        char buffer[4096];
        for (bool flushing = false;;) {
            char* to = buffer;
            std::size_t room = sizeof buffer;
            const std::size_t done =
                flushing ? iconv(handle_, nullptr, nullptr, &to, &room) : iconv(handle_, &from, &left, &to, &room);
            const int error = errno;
            out.append(buffer, sizeof buffer - room);
            if (done != static_cast<std::size_t>(-1)) {
                if (flushing)
                    return out;
                flushing = true; // a shift state may still hold a character
            } else if (error != E2BIG) {
                if (flushing)
                    return out;
                out += kReplacement;
                if (left == 0 || error == EINVAL)
                    return out; // a character that is cut off at the end
                ++from;
                --left;
            }
        }
    }

private:
    static inline const iconv_t kNone = reinterpret_cast<iconv_t>(-1);
    iconv_t handle_;
};

} // namespace

std::string toUtf8(std::string_view bytes, std::string_view charset)
{
    const std::string name = normalName(charset);
    const bool plain = name.empty() || name == "utf-8" || name == "utf8" || name == "us-ascii" || name == "ascii";
    if (plain) {
        return platform::ascii::isAscii(bytes) || platform::isValidUtf8(bytes) ? std::string(bytes)
                                                                               : fromWindows1252(bytes);
    }
    if (name == "iso-8859-1" || name == "latin1" || name == "windows-1252" || name == "cp1252")
        return fromWindows1252(bytes);
    Converter converter(name);
    if (!converter.known())
        return toUtf8(bytes, {});
    return platform::withValidUtf8(converter.convert(bytes));
}

} // namespace mervo::desk
