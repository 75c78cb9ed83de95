#include "platform/desk/addressbook/CardText.h"

#include "platform/ascii.h"
#include "platform/desk/charset/Charset.h"
#include "platform/desk/contentlines/TextValue.h"

#include <algorithm>
#include <optional>
#include <utility>

namespace mervo::desk {
namespace {

namespace ascii = platform::ascii;

std::optional<int> hexDigit(char c)
{
    if (ascii::isDigit(c))
        return c - '0';
    const char upper = ascii::upper(c);
    return upper >= 'A' && upper <= 'F' ? std::optional(upper - 'A' + 10) : std::nullopt;
}

/// RFC 2045, 6.7, without its soft line ends, which are gone by now. What is no escape stands for itself.
std::string fromQuotedPrintable(std::string_view text)
{
    std::string bytes;
    bytes.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto high = text[i] == '=' && i + 2 < text.size() ? hexDigit(text[i + 1]) : std::nullopt;
        const auto low = high ? hexDigit(text[i + 2]) : std::nullopt;
        bytes += low ? static_cast<char>(*high * 16 + *low) : text[i];
        i += low ? 2 : 0;
    }
    return bytes;
}

bool isEncoding(const LineParameter& parameter)
{
    return ascii::equalsIgnoringCase(parameter.name, "ENCODING")
        || (parameter.name.empty() && !parameter.values.empty()
            && ascii::equalsIgnoringCase(parameter.values.front(), "QUOTED-PRINTABLE"));
}

/// Whether the bytes of the value are others than those of its text.
bool isChanging(const LineParameter& parameter)
{
    return isEncoding(parameter) || ascii::equalsIgnoringCase(parameter.name, "CHARSET");
}

bool isQuotedPrintable(const ContentLine& line)
{
    return std::ranges::any_of(line.parameters, [](const LineParameter& parameter) {
        return isEncoding(parameter) && !parameter.values.empty()
            && ascii::equalsIgnoringCase(parameter.values.front(), "QUOTED-PRINTABLE");
    });
}

/// Escapes and separators are ASCII and stand outside of the encoding.
std::string decoded(const ContentLine& line, std::string_view part)
{
    std::string bytes = isQuotedPrintable(line) ? fromQuotedPrintable(part) : std::string(part);
    const std::string_view charset = line.parameter("CHARSET").value_or("");
    if (!charset.empty() || !ascii::isAscii(bytes))
        bytes = toUtf8(bytes, charset);
    return unescapedText(bytes);
}

} // namespace

std::string cardText(const ContentLine& line)
{
    return decoded(line, line.value);
}

std::vector<std::string> cardParts(const ContentLine& line)
{
    std::vector<std::string> parts;
    for (const std::string_view part : splitValue(line.value, ';'))
        parts.push_back(decoded(line, part));
    return parts;
}

std::vector<std::string> writtenParts(const ContentLine& line)
{
    std::vector<std::string> parts;
    const bool isPlain = std::ranges::none_of(line.parameters, isChanging);
    for (const std::string_view part : splitValue(line.value, ';'))
        parts.push_back(isPlain ? std::string(part) : escapedText(decoded(line, part)));
    return parts;
}

ContentLine withCardValue(ContentLine line, std::string value, std::string_view version)
{
    // Control characters do not survive the writing, and what they kept apart must not become a charset by it.
    if (auto written = readContentLine(writeContentLine(line)))
        line = *std::move(written);
    std::erase_if(line.parameters, isChanging);
    if (version == "2.1" && !ascii::isAscii(value))
        line.parameters.push_back({"CHARSET", {"UTF-8"}});
    line.value = std::move(value);
    return line;
}

std::vector<std::string> cardTypes(const ContentLine& line)
{
    std::vector<std::string> types;
    for (const LineParameter& parameter : line.parameters) {
        if (!parameter.name.empty() && !ascii::equalsIgnoringCase(parameter.name, "TYPE"))
            continue;
        for (const std::string& value : parameter.values) {
            for (const std::string_view type : splitValue(value, ',')) // 4.0: TYPE="work,voice"
                types.push_back(ascii::lowered(type));
        }
    }
    return types;
}

} // namespace mervo::desk
