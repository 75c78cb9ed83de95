#include "platform/desk/contentlines/TextValue.h"

namespace mervo::desk {

std::string unescapedText(std::string_view value)
{
    std::string text;
    text.reserve(value.size());
    for (std::size_t i = 0; i < value.size(); ++i) {
        const char next = value[i] == '\\' && i + 1 < value.size() ? value[i + 1] : '\0';
        const bool isLineEnd = next == 'n' || next == 'N';
        const bool isEscape = isLineEnd || next == '\\' || next == ';' || next == ',' || next == ':';
        text += isLineEnd ? '\n' : isEscape ? next : value[i];
        i += isEscape ? 1 : 0;
    }
    return text;
}

std::string escapedText(std::string_view text)
{
    std::string value;
    value.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if (c == '\n' || c == '\r') {
            value += "\\n";
            i += c == '\r' && i + 1 < text.size() && text[i + 1] == '\n' ? 1 : 0;
        } else if (c == '\\' || c == ';' || c == ',') {
            value += '\\';
            value += c;
        } else if (static_cast<unsigned char>(c) >= 0x20 ? c != 0x7F : c == '\t') {
            value += c;
        }
    }
    return value;
}

std::vector<std::string_view> splitValue(std::string_view value, char separator)
{
    std::vector<std::string_view> parts;
    std::size_t start = 0;
    for (std::size_t i = 0; i < value.size(); ++i) {
        if (value[i] == '\\') {
            ++i;
        } else if (value[i] == separator) {
            parts.push_back(value.substr(start, i - start));
            start = i + 1;
        }
    }
    parts.push_back(value.substr(start));
    return parts;
}

} // namespace mervo::desk
