#include "cockpit/model/shown/ShownText.h"

#include "core/foundation/Text.h"
#include "platform/unicode.h"

#include <fmt/format.h>

namespace mervo::ShownText {

namespace {

/// The text's first `limit` code points, and how many follow: counted without a look at what they combine to, since a
/// hostile text may be one character of a million parts.
struct Split {
    std::string_view first;
    std::size_t leftOut = 0;
};

Split split(std::string_view text, std::size_t limit)
{
    std::size_t points = 0, end = text.size();
    for (std::size_t at = 0; at < text.size(); ++points) {
        if (points == limit)
            end = at;
        at += platform::firstCodePoint(text.substr(at)).length;
    }
    return {text.substr(0, end), points > limit ? points - limit : 0};
}

/// Line ends as one sign: an ordinary letter has many, and "<U+000A>" between its lines would hide the letter.
std::string joinLines(std::string_view text)
{
    constexpr std::string_view sign = "\u21B5";
    std::string joined;
    for (std::size_t at = 0; at < text.size(); ++at) {
        const bool isPair = text.substr(at, 2) == "\r\n";
        if (isPair || text[at] == '\n') {
            joined += sign;
        } else {
            joined += text[at];
        }
        at += isPair ? 1 : 0;
    }
    return joined;
}

QString withNote(std::string shown, std::size_t leftOut)
{
    if (leftOut > 0)
        shown += fmt::format("... ({} more character{})", leftOut, leftOut == 1 ? "" : "s");
    return QString::fromStdString(shown);
}

} // namespace

Cut cut(std::string_view text, std::size_t limit)
{
    const auto [first, leftOut] = split(text, limit);
    return {QString::fromStdString(Text::visible(first)), leftOut};
}

QString whole(std::string_view text)
{
    return QString::fromStdString(Text::visible(text));
}

QString line(std::string_view text, std::size_t limit)
{
    const auto [first, leftOut] = split(text, limit);
    return withNote(Text::visibleLine(joinLines(first)), leftOut);
}

QString block(std::string_view text, std::size_t limit)
{
    const auto [first, leftOut] = split(text, limit);
    return withNote(Text::visible(first), leftOut);
}

} // namespace mervo::ShownText
