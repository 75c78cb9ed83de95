#include "frontends/cli/Wrap.h"

#include "core/foundation/Text.h"
#include "platform/unicode.h"

#include <span>

namespace mervo::cli {

std::string wrapped(std::string_view text, std::size_t width, std::size_t indent)
{
    const std::vector<std::string> words = Text::split(text, ' '); // two blanks stand around an empty word, and stay
    std::string result = words.front();
    std::size_t column = platform::countCharacters(result);
    for (const std::string& word : std::span(words).subspan(1)) {
        const std::size_t length = platform::countCharacters(word);
        const bool fits = column <= indent || column + 1 + length <= width;
        result += fits ? " " : "\n" + std::string(indent, ' ');
        result += word;
        column = (fits ? column + 1 : indent) + length;
    }
    return result + "\n";
}

std::string rewrapped(std::string_view text, std::size_t width)
{
    std::string result;
    std::string paragraph;
    const auto endParagraph = [&] {
        if (!paragraph.empty())
            result += wrapped(paragraph, width, 0);
        paragraph.clear();
    };
    for (const std::string& line : Text::split(text.substr(0, text.find_last_not_of('\n') + 1), '\n')) {
        if (line.empty() || line.starts_with(' ')) {
            endParagraph();
            result += line + "\n";
        } else {
            paragraph += (paragraph.empty() ? "" : " ") + line;
        }
    }
    endParagraph();
    return result;
}

} // namespace mervo::cli
