#include "platform/desk/mail/MailboxName.h"

#include "platform/unicode.h"

#include <algorithm>
#include <cstdint>
#include <optional>

namespace mervo::desk {
namespace {

constexpr std::string_view kBase64 = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+,";

void appendUtf8(std::string& out, std::uint32_t code)
{
    const auto put = [&out](std::uint32_t byte) { out.push_back(static_cast<char>(byte)); };
    if (code < 0x80) {
        put(code);
    } else if (code < 0x800) {
        put(0xC0 | code >> 6);
        put(0x80 | (code & 0x3F));
    } else if (code < 0x10000) {
        put(0xE0 | code >> 12);
        put(0x80 | (code >> 6 & 0x3F));
        put(0x80 | (code & 0x3F));
    } else {
        put(0xF0 | code >> 18);
        put(0x80 | (code >> 12 & 0x3F));
        put(0x80 | (code >> 6 & 0x3F));
        put(0x80 | (code & 0x3F));
    }
}

/// A run between "&" and "-": base64 of UTF-16, big end first. False when it is not well formed.
bool appendRun(std::string& out, std::string_view run)
{
    std::uint32_t bits = 0, high = 0;
    int count = 0;
    for (const char c : run) {
        const std::size_t digit = kBase64.find(c);
        if (digit == std::string_view::npos)
            return false;
        bits = (bits << 6 | static_cast<std::uint32_t>(digit)) & 0x3FFFFF;
        count += 6;
        if (count < 16)
            continue;
        count -= 16;
        const std::uint32_t unit = bits >> count & 0xFFFF;
        const bool low = unit >= 0xDC00 && unit < 0xE000;
        if (low != (high != 0))
            return false;
        if (unit >= 0xD800 && unit < 0xDC00) {
            high = unit;
        } else {
            appendUtf8(out, low ? 0x10000 + ((high - 0xD800) << 10) + (unit - 0xDC00) : unit);
            high = 0;
        }
    }
    return high == 0 && count < 6 && (bits & ((1U << count) - 1)) == 0;
}

std::optional<std::string> decode(std::string_view text)
{
    std::string out;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '&') {
            out.push_back(text[i]);
            continue;
        }
        const std::size_t end = text.find('-', i);
        if (end == std::string_view::npos)
            return std::nullopt;
        if (end == i + 1) {
            out.push_back('&');
        } else if (!appendRun(out, text.substr(i + 1, end - i - 1))) {
            return std::nullopt;
        }
        i = end;
    }
    for (const unsigned char c : out) {
        if (c < 0x20 || c == 0x7F || c == '/')
            return std::nullopt;
    }
    return out;
}

std::uint32_t nextCodePoint(std::string_view& text)
{
    const auto lead = static_cast<unsigned char>(text[0]);
    const std::size_t length = lead < 0x80 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
    std::uint32_t code = length == 1 ? lead : lead & (0x7FU >> length);
    for (std::size_t i = 1; i < length; ++i)
        code = code << 6 | (static_cast<unsigned char>(text[i]) & 0x3FU);
    text.remove_prefix(length);
    return code;
}

/// Writes UTF-16 units as the base64 run of modified UTF-7.
class Run {
public:
    explicit Run(std::string& out)
        : out_(out)
    {
        out_.push_back('&');
    }

    void put(std::uint32_t unit)
    {
        bits_ = bits_ << 16 | unit;
        for (count_ += 16; count_ >= 6;) {
            count_ -= 6;
            out_.push_back(kBase64[bits_ >> count_ & 0x3F]);
        }
        bits_ &= 0x3F;
    }

    void close()
    {
        if (count_ > 0)
            out_.push_back(kBase64[bits_ << (6 - count_) & 0x3F]);
        out_.push_back('-');
    }

private:
    std::string& out_;
    std::uint32_t bits_ = 0;
    int count_ = 0;
};

bool standsForItself(char c)
{
    return c >= 0x20 && c < 0x7F && c != '&' && c != '.' && c != '/';
}

} // namespace

std::string decodeMailboxComponent(std::string_view onDisk)
{
    std::string name =
        onDisk.find('&') == std::string_view::npos ? std::string(onDisk) : decode(onDisk).value_or(std::string(onDisk));
    // A list of mailboxes is lines of names.
    std::replace_if(
        name.begin(), name.end(), [](unsigned char c) { return c < 0x20 || c == 0x7F; }, ' ');
    return platform::isValidUtf8(name) ? name : platform::withValidUtf8(name);
}

std::string encodeMailboxComponent(std::string_view name)
{
    const std::string valid = platform::withValidUtf8(name);
    std::string_view rest = valid;
    std::string out;
    while (!rest.empty()) {
        if (standsForItself(rest[0])) {
            out.push_back(rest[0]);
            rest.remove_prefix(1);
        } else if (rest[0] == '&') {
            out += "&-";
            rest.remove_prefix(1);
        } else {
            Run run(out);
            while (!rest.empty() && !standsForItself(rest[0]) && rest[0] != '&') {
                const std::uint32_t code = nextCodePoint(rest);
                if (code >= 0x10000) {
                    run.put(0xD800 + ((code - 0x10000) >> 10));
                    run.put(0xDC00 + ((code - 0x10000) & 0x3FF));
                } else {
                    run.put(code);
                }
            }
            run.close();
        }
    }
    return out;
}

} // namespace mervo::desk
