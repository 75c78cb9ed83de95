#include "platform/desk/contentlines/ContentLine.h"

#include "platform/ascii.h"

#include <algorithm>

namespace mervo::desk {
namespace {

namespace ascii = platform::ascii;

constexpr std::size_t kLongestPiece = 75; // bytes, the line end not counted: RFC 5545, 3.1

bool isNameByte(char c)
{
    return ascii::isLetter(c) || ascii::isDigit(c) || c == '-' || c == '_';
}

bool isControl(char c)
{
    return (static_cast<unsigned char>(c) < 0x20 && c != '\t') || c == 0x7F;
}

/// A run of name bytes from `at`, which is moved behind it.
std::string_view takeName(std::string_view text, std::size_t& at)
{
    const std::size_t start = at;
    while (at < text.size() && isNameByte(text[at]))
        ++at;
    return text.substr(start, at - start);
}

/// The group and the name; `at` is left behind them. An empty name: the line is none.
struct Head {
    std::string_view group, name;
};
Head takeHead(std::string_view text, std::size_t& at)
{
    Head head{{}, takeName(text, at)};
    if (at < text.size() && text[at] == '.' && !head.name.empty()) {
        head.group = head.name;
        head.name = takeName(text, ++at);
    }
    if (at >= text.size() || (text[at] != ':' && text[at] != ';'))
        head.name = {};
    return head;
}

/// RFC 6868: a line end, a circumflex and a double quote in a parameter.
std::string decoded(std::string_view value)
{
    if (value.find('^') == std::string_view::npos)
        return std::string(value);
    std::string result;
    for (std::size_t i = 0; i < value.size(); ++i) {
        const char next = value[i] == '^' && i + 1 < value.size() ? value[i + 1] : '\0';
        const bool isEscape = next == 'n' || next == '^' || next == '\'';
        result += !isEscape ? value[i] : next == 'n' ? '\n' : next == '^' ? '^' : '"';
        i += isEscape ? 1 : 0;
    }
    return result;
}

std::string encoded(std::string_view value)
{
    std::string result;
    bool isQuoted = value.empty();
    for (const char c : value) {
        isQuoted = isQuoted || c == ':' || c == ';' || c == ',';
        if (c == '\n')
            result += "^n";
        else if (c == '^')
            result += "^^";
        else if (c == '"')
            result += "^'";
        else if (!isControl(c))
            result += c;
    }
    return isQuoted ? '"' + result + '"' : result;
}

/// One value of a parameter from `at`, which is left at what ends it; nothing when a quote does not end.
std::optional<std::string> takeParameterValue(std::string_view text, std::size_t& at)
{
    if (at < text.size() && text[at] == '"') {
        const std::size_t end = text.find('"', at + 1);
        if (end == std::string_view::npos)
            return std::nullopt;
        std::string value = decoded(text.substr(at + 1, end - at - 1));
        at = end + 1;
        return value;
    }
    const std::size_t end = std::min(text.find_first_of(":;,", at), text.size());
    std::string value = decoded(text.substr(at, end - at));
    at = end;
    return value;
}

/// A parameter from behind its semicolon; false when the line is none.
bool takeParameter(std::string_view text, std::size_t& at, std::vector<LineParameter>& parameters)
{
    LineParameter parameter;
    const std::size_t start = at;
    const std::string_view name = takeName(text, at);
    if (at < text.size() && text[at] == '=') {
        parameter.name = name;
        ++at;
    } else {
        at = start; // a value alone
    }
    for (;;) {
        auto value = takeParameterValue(text, at);
        if (!value)
            return false;
        parameter.values.push_back(*std::move(value));
        if (at >= text.size() || text[at] != ',')
            break;
        ++at;
    }
    parameters.push_back(std::move(parameter));
    return at < text.size() && (text[at] == ':' || text[at] == ';');
}

/// Where the bytes of a fold end that begins at the line feed `at`; `at` + 1 where none is.
std::size_t behindFold(std::string_view raw, std::size_t at)
{
    const bool isFold = at + 1 < raw.size() && (raw[at + 1] == ' ' || raw[at + 1] == '\t');
    return at + (isFold ? 2 : 1);
}

} // namespace

std::optional<std::string_view> ContentLine::parameter(std::string_view wanted) const
{
    for (const LineParameter& parameter : parameters) {
        if (ascii::equalsIgnoringCase(parameter.name, wanted) && !parameter.values.empty())
            return parameter.values.front();
    }
    return std::nullopt;
}

std::optional<ContentLine> readContentLine(std::string_view text)
{
    std::size_t at = 0;
    const Head head = takeHead(text, at);
    if (head.name.empty())
        return std::nullopt;
    ContentLine line{.group = std::string(head.group), .name = std::string(head.name)};
    while (text[at] == ';') {
        if (!takeParameter(text, ++at, line.parameters))
            return std::nullopt;
    }
    line.value = text.substr(at + 1);
    return line;
}

std::string writeContentLine(const ContentLine& line)
{
    std::string text = line.group.empty() ? line.name : line.group + '.' + line.name;
    for (const LineParameter& parameter : line.parameters) {
        text += ';' + parameter.name;
        for (std::size_t i = 0; i < parameter.values.size(); ++i) {
            text += i > 0 ? "," : parameter.name.empty() ? "" : "=";
            text += encoded(parameter.values[i]);
        }
    }
    return text + ':' + withoutControls(line.value);
}

std::string withoutControls(std::string_view value)
{
    std::string result;
    std::ranges::copy_if(value, std::back_inserter(result), [](char c) { return !isControl(c); });
    return result;
}

std::string_view contentLineName(std::string_view text)
{
    std::size_t at = 0;
    return takeHead(text, at).name;
}

std::string unfolded(std::string_view raw)
{
    if (raw.ends_with('\n'))
        raw.remove_suffix(raw.ends_with("\r\n") ? 2 : 1);
    std::string result;
    std::size_t from = 0;
    for (std::size_t at = raw.find('\n'); at != std::string_view::npos; at = raw.find('\n', from)) {
        std::size_t end = at > from && raw[at - 1] == '\r' ? at - 1 : at;
        const std::size_t next = behindFold(raw, at);
        if (next == at + 1 && end > from && raw[end - 1] == '=')
            --end; // quoted-printable goes on without a blank
        result += raw.substr(from, end - from);
        from = next;
    }
    return result.append(raw.substr(from));
}

std::string folded(std::string_view text, std::string_view lineEnd)
{
    std::string result;
    result.reserve(text.size() + text.size() / kLongestPiece * (lineEnd.size() + 1) + lineEnd.size());
    std::size_t room = kLongestPiece;
    while (text.size() > room) {
        std::size_t cut = room;
        while (cut > room - 3 && (static_cast<unsigned char>(text[cut]) & 0xC0U) == 0x80)
            --cut; // not within the bytes of a character
        result.append(text.substr(0, cut)).append(lineEnd) += ' ';
        text.remove_prefix(cut);
        room = kLongestPiece - 1;
    }
    return result.append(text).append(lineEnd);
}

} // namespace mervo::desk
