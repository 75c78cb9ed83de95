#include "platform/desk/notebook/TextNote.h"

#include "platform/ascii.h"
#include "platform/desk/notebook/HtmlText.h"
#include "platform/unicode.h"

#include <algorithm>

namespace mervo::desk {
namespace {

constexpr std::string_view kMark = "\uFEFF"; // byte order mark
constexpr std::size_t kLongestLine = 4096; // bytes of a line that are looked at for a title

std::string_view trimmed(std::string_view text)
{
    const std::size_t start = text.find_first_not_of(" \t\r\n");
    return start == std::string_view::npos ? std::string_view()
                                           : text.substr(start, text.find_last_not_of(" \t\r\n") + 1 - start);
}

/// The line at the start of a text, which loses it; its end is left out.
std::string_view takeLine(std::string_view& text)
{
    const std::size_t end = std::min(text.find('\n'), text.size());
    std::string_view line = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    if (line.ends_with('\r'))
        line.remove_suffix(1);
    return line;
}

std::string_view lastLine(std::string_view text)
{
    text = text.substr(0, text.find_last_not_of(" \t\r\n") + 1);
    return text.substr(text.rfind('\n') + 1);
}

/// "- ", "* ", "+ ", "1. " or "1) " behind blanks; their length with the blanks, 0 for a line of another kind.
std::size_t itemMark(std::string_view line)
{
    const std::size_t start = std::min(line.find_first_not_of(" \t"), line.size());
    std::size_t end = start;
    while (end < line.size() && platform::ascii::isDigit(line[end]))
        ++end;
    const std::string_view marks = end == start ? "-*+" : ".)";
    if (end >= line.size() || marks.find(line[end]) == std::string_view::npos)
        return 0;
    return line.substr(end + 1).starts_with(' ') ? end + 2 : 0;
}

/// What goes on in the same list, table or quotation when it follows without an empty line.
bool continues(std::string_view before, std::string_view after)
{
    const auto begins = [&](char mark) {
        return trimmed(before).starts_with(mark) && trimmed(after).starts_with(mark);
    };
    return (itemMark(before) > 0 && itemMark(after) > 0) || begins('|') || begins('>');
}

/// Takes "[text](target)", "[[page|text]]" and their images apart. `text` starts at the bracket and loses all of it;
/// nothing is lost and false given when this is none of them.
bool takeLink(std::string_view& text, std::string& title, bool isImage)
{
    const bool isPage = text.starts_with("[[");
    const std::size_t close = text.find(isPage ? "]]" : "](");
    const std::size_t end = isPage || close == std::string_view::npos ? close : text.find(')', close);
    if (end == std::string_view::npos)
        return false;
    std::string_view label = isPage ? text.substr(2, close - 2) : text.substr(1, close - 1);
    if (isPage)
        label = label.substr(label.rfind('|') + 1);
    if (!isImage)
        title += label;
    text.remove_prefix(end + (isPage ? 2 : 1));
    return true;
}

/// A line without the marks of emphasis, code, links and images.
std::string withoutInlineMarks(std::string_view text)
{
    std::string title;
    const auto isWord = [](char c) {
        return platform::ascii::isLetter(c) || platform::ascii::isDigit(c) || static_cast<unsigned char>(c) >= 0x80;
    };
    while (!text.empty()) {
        const char c = text[0];
        const char next = text.size() > 1 ? text[1] : ' ';
        if (c == '\\' && std::string_view("\\`*_{}[]()#+-.!~|>").find(next) != std::string_view::npos) {
            title += next;
            text.remove_prefix(2);
            continue;
        }
        const bool isImage = c == '!' && next == '[';
        std::string_view link = text.substr(isImage ? 1 : 0);
        if (link.starts_with('[') && takeLink(link, title, isImage)) {
            text = link;
            continue;
        }
        // A star or underline between blanks, or an underline within a word, is no emphasis.
        const bool isLoose = (title.empty() || title.back() == ' ') && next == ' ';
        const bool isInWord = c == '_' && !title.empty() && isWord(title.back()) && isWord(next);
        const bool isPair = c == '~' && next == c;
        if (isPair) {
            text.remove_prefix(2);
        } else {
            if (!((c == '*' || c == '_') && !isLoose && !isInWord) && c != '`')
                title += c;
            text.remove_prefix(1);
        }
    }
    return title;
}

/// The text of a line behind the marks that begin it; empty for a line that shows none.
std::string titleOfLine(std::string_view line)
{
    line = trimmed(line.substr(0, kLongestLine));
    if (line.starts_with("```") || line.starts_with("~~~") || line.starts_with("<!--"))
        return {};
    if (!line.empty() && line.find_first_not_of("-*_= \t") == std::string_view::npos)
        return {}; // a rule, or the line below a heading
    while (line.starts_with('>'))
        line = trimmed(line.substr(1));
    line = trimmed(line.substr(itemMark(line)));
    for (const std::string_view box : {"[ ] ", "[x] ", "[X] "}) {
        if (line.starts_with(box))
            line.remove_prefix(box.size());
    }
    const std::size_t level = std::min(line.find_first_not_of('#'), line.size());
    const bool isHeading = level > 0 && level <= 6 && (level == line.size() || line[level] == ' ');
    if (isHeading) {
        line = trimmed(line.substr(level));
        const std::size_t end = line.find_last_not_of('#') + 1;
        if (end == 0 || line[end - 1] == ' ') // a heading may be closed by more of them
            line = trimmed(line.substr(0, end));
    }
    return std::string(trimmed(withoutInlineMarks(line)));
}

/// The end of the front matter with its line end; 0 when there is none.
std::size_t frontMatter(std::string_view file)
{
    constexpr std::size_t kLongest = 64 * 1024;
    std::string_view rest = file.substr(0, kLongest);
    if (takeLine(rest) != "---")
        return 0;
    while (!rest.empty()) {
        const std::string_view line = takeLine(rest);
        if (line == "---" || line == "...")
            return static_cast<std::size_t>(rest.data() - file.data());
    }
    return 0;
}

std::string appended(std::string_view file, std::string_view addition, bool withEmptyLine)
{
    std::string result(file);
    const std::string_view end = file.find("\r\n") == std::string_view::npos ? "\n" : "\r\n";
    if (!file.empty() && !file.ends_with('\n'))
        result += end;
    if (withEmptyLine && !file.ends_with("\n\n") && !file.ends_with("\n\r\n"))
        result += end;
    result += withLineEndsOf(file, addition);
    result += end;
    return result;
}

} // namespace

TextParts partsOfPlainText(std::string_view file)
{
    const std::size_t mark = file.starts_with(kMark) ? kMark.size() : 0;
    return {file.substr(0, mark), file.substr(mark)};
}

TextParts partsOfMarkdown(std::string_view file)
{
    const TextParts parts = partsOfPlainText(file);
    const std::size_t end = parts.before.size() + frontMatter(parts.text);
    return {file.substr(0, end), file.substr(end)};
}

std::string shownText(std::string_view text)
{
    std::string shown;
    shown.reserve(text.size());
    while (!text.empty()) {
        std::size_t end = 0;
        while (end < text.size() && text[end] != '\r' && text[end] != '\0')
            ++end;
        shown += text.substr(0, end);
        const bool isEnd = end < text.size() && text[end] == '\r';
        if (isEnd && !text.substr(end + 1).starts_with('\n'))
            shown += '\n';
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    shown.resize(shown.find_last_not_of(" \t\n") + 1);
    shown.erase(0, std::min(shown.find_first_not_of('\n'), shown.size()));
    return platform::withValidUtf8(shown);
}

std::string titleOfMarkdown(std::string_view shown)
{
    while (!shown.empty()) {
        std::string title = titleOfLine(takeLine(shown));
        if (!title.empty())
            return title;
    }
    return {};
}

std::string appendedToMarkdown(std::string_view file, std::string_view addition)
{
    const std::string_view last = lastLine(partsOfMarkdown(file).text);
    std::string_view rest = addition;
    return appended(file, addition, !last.empty() && !continues(last, takeLine(rest)));
}

std::string appendedToPlainText(std::string_view file, std::string_view addition)
{
    return appended(file, addition, false);
}

std::string markdownOfBody(std::string_view html)
{
    std::string text = markdownOfHtml(html);
    std::string_view rest = text;
    const std::string_view first = takeLine(rest);
    const bool isBold = first.size() > 4 && first.starts_with("**") && first.find("**", 2) == first.size() - 2;
    if (!isBold)
        return text;
    const std::string_view behind = rest.substr(std::min(rest.find_first_not_of('\n'), rest.size()));
    std::string titled = "# ";
    titled += first.substr(2, first.size() - 4);
    if (!behind.empty())
        titled.append("\n\n").append(behind);
    return titled;
}

std::string withLineEndsOf(std::string_view file, std::string_view text)
{
    std::string result;
    const bool isDos = file.find("\r\n") != std::string_view::npos;
    for (const char c : text) {
        if (c == '\n' && isDos)
            result += '\r';
        result += c;
    }
    return result;
}

} // namespace mervo::desk
