#include "platform/desk/mail/MessageHead.h"

#include "platform/desk/mail/EncodedWord.h"
#include "platform/desk/mail/MailAddress.h"
#include "platform/desk/mail/MailDate.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace mervo::desk {
namespace {

bool isBlank(char c)
{
    return c == ' ' || c == '\t';
}

std::string_view trimmed(std::string_view text)
{
    while (!text.empty() && (isBlank(text.front()) || text.front() == '\r' || text.front() == '\n'))
        text.remove_prefix(1);
    while (!text.empty() && (isBlank(text.back()) || text.back() == '\r' || text.back() == '\n'))
        text.remove_suffix(1);
    return text;
}

/// The line at the start of `text`, with its line end.
std::string_view firstLine(std::string_view text) noexcept
{
    const void* end = std::memchr(text.data(), '\n', text.size());
    return end == nullptr ? text
                          : text.substr(0, static_cast<std::size_t>(static_cast<const char*>(end) - text.data()) + 1);
}

bool isEmptyLine(std::string_view line) noexcept
{
    return line == "\n" || line == "\r\n";
}

/// Goes through the fields without a call for each: the index reads a hundred thousand heads with it.
/// A field whose first letter is not wanted is passed over unread. True when the head's end was seen.
template <typename Wants, typename Visit>
bool visitFields(std::string_view head, Wants&& wants, Visit&& visit)
{
    while (!head.empty()) {
        const std::string_view line = firstLine(head);
        if (isEmptyLine(line))
            return true;
        std::size_t length = line.size();
        while (length < head.size() && isBlank(head[length]))
            length += firstLine(head.substr(length)).size();
        const std::size_t colon = wants(head[0]) ? line.find(':') : std::string_view::npos;
        if (colon != std::string_view::npos && colon > 0 && !isBlank(head[0])) {
            std::string_view name = line.substr(0, colon);
            while (!name.empty() && isBlank(name.back()))
                name.remove_suffix(1);
            if (name.find(' ') == std::string_view::npos)
                visit(name, head.substr(colon + 1, length - colon - 1));
        }
        head.remove_prefix(length);
    }
    return false;
}

bool isNamed(std::string_view name, std::string_view lower)
{
    return name.size() == lower.size()
        && std::equal(name.begin(), name.end(), lower.begin(), [](char a, char b) { return (a | 0x20) == b; });
}

std::string unfolded(std::string_view raw)
{
    std::string text;
    text.reserve(raw.size());
    for (const char c : raw) {
        if (c != '\r' && c != '\n')
            text.push_back(c == '\0' ? ' ' : c);
    }
    return text;
}

std::string bareMessageId(std::string_view raw)
{
    const std::size_t open = raw.find('<');
    if (open != std::string_view::npos) {
        const std::size_t close = raw.find('>', open);
        raw = raw.substr(open + 1, close == std::string_view::npos ? close : close - open - 1);
    }
    return decodeHeaderText(trimmed(raw));
}

/// The commonest form, `Name <address>` in ASCII without quotes, needs no reader.
std::string senderText(std::string_view raw)
{
    static constexpr std::array<bool, 256> kSimple = [] {
        std::array<bool, 256> table{};
        for (std::size_t c = 0x20; c < 0x7F; ++c)
            table[c] = std::string_view("\"(,;:\\=").find(static_cast<char>(c)) == std::string_view::npos;
        return table;
    }();
    const bool simple = std::all_of(raw.begin(), raw.end(), [](unsigned char c) { return kSimple[c]; });
    const std::size_t open = raw.find('<');
    if (simple && open != std::string_view::npos && open > 1 && raw[open - 1] == ' ' && !isBlank(raw[open - 2])
        && raw.find('>') == raw.size() - 1 && raw.find(' ', open) == std::string_view::npos)
        return std::string(raw);
    for (const MailAddress& address : parseAddressList(raw))
        return displayAddress(address);
    return {};
}

bool isTextType(std::string_view raw)
{
    const std::string_view type = trimmed(raw.substr(0, raw.find(';')));
    return isNamed(type, "text/plain") || isNamed(type, "text/html");
}

bool mentions(std::string_view raw, std::string_view lower)
{
    return std::search(raw.begin(), raw.end(), lower.begin(), lower.end(), [](char a, char b) {
        return (a | 0x20) == b;
    }) != raw.end();
}

} // namespace

std::optional<std::size_t> endOfHead(std::string_view bytes) noexcept
{
    for (std::size_t at = 0; at < bytes.size();) {
        const std::string_view line = firstLine(bytes.substr(at));
        at += line.size();
        if (isEmptyLine(line))
            return at;
    }
    return std::nullopt;
}

void forEachField(
    std::string_view head, const std::function<void(std::string_view name, std::string_view value)>& visit)
{
    visitFields(
        head, [](char) { return true; },
        [&](std::string_view name, std::string_view value) { visit(name, trimmed(value)); });
}

MessageHead readMessageHead(std::string_view head)
{
    std::string_view subject, from, sender, to, date, messageId, type, disposition;
    const auto wants = [](char first) {
        return std::string_view("tfdsmcTFDSMC").find(first) != std::string_view::npos;
    };
    const bool isWhole = visitFields(head, wants, [&](std::string_view name, std::string_view value) {
        const auto keepFirst = [&](std::string_view lower, std::string_view& field) {
            if (field.empty() && isNamed(name, lower))
                field = trimmed(value);
        };
        switch (name.size()) {
        case 2:
            keepFirst("to", to);
            break;
        case 4:
            keepFirst("from", from), keepFirst("date", date);
            break;
        case 6:
            keepFirst("sender", sender);
            break;
        case 7:
            keepFirst("subject", subject);
            break;
        case 10:
            keepFirst("message-id", messageId);
            break;
        case 12:
            keepFirst("content-type", type);
            break;
        case 19:
            keepFirst("content-disposition", disposition);
            break;
        default:
            break;
        }
    });
    MessageHead result;
    result.isWhole = isWhole;
    result.subject = decodeHeaderText(subject);
    result.sender = senderText(from.empty() ? sender : from);
    result.messageId = bareMessageId(messageId);
    result.to = unfolded(to);
    result.sent = parseMailDate(date);
    result.isSinglePartText = (type.empty() || (isTextType(type) && !mentions(type, "name")))
        && !mentions(disposition, "attachment") && !mentions(disposition, "filename");
    return result;
}

} // namespace mervo::desk
