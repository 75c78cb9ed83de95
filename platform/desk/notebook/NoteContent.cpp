#include "platform/desk/notebook/NoteContent.h"

#include "platform/desk/notebook/HtmlText.h"
#include "platform/desk/notebook/TextNote.h"
#include "platform/unicode.h"

#include <algorithm>

namespace mervo::desk {
namespace {

constexpr std::size_t kLongestTitle = 1000; // bytes
constexpr std::size_t kLongestFileName = 120; // bytes; some file systems take 143, and a number and a suffix follow

/// The first so many bytes, with whole characters only.
std::string_view shortened(std::string_view text, std::size_t most)
{
    if (text.size() <= most)
        return text;
    std::size_t end = 0;
    while (end < text.size()) {
        const std::size_t next = end + platform::firstCharacterLength(text.substr(end, most + 1));
        if (next > most)
            break;
        end = next;
    }
    return text.substr(0, end > 0 ? end : most);
}

std::string_view trimmed(std::string_view text)
{
    const std::size_t start = text.find_first_not_of(" \t\n");
    return start == std::string_view::npos ? std::string_view()
                                           : text.substr(start, text.find_last_not_of(" \t\n") + 1 - start);
}

std::string titleOf(std::string_view line)
{
    line = trimmed(line);
    if (line.starts_with("• "))
        line = trimmed(line.substr(std::string_view("• ").size()));
    return onOneLine(trimmed(shortened(line, kLongestTitle)));
}

std::string firstLine(std::string_view text)
{
    const std::size_t start = std::min(text.find_first_not_of(" \t\n"), text.size());
    return titleOf(text.substr(start, text.find('\n', start) - start));
}

TextParts partsOfText(NoteKind kind, std::string_view file)
{
    return kind == NoteKind::markdown ? partsOfMarkdown(file) : partsOfPlainText(file);
}

/// A character that has no place in a file's name: separators, what FAT and vault programs refuse, and what cannot be
/// seen or turns the direction of a text.
bool isUnfit(char32_t c)
{
    return c < 0x20 || (c >= 0x7F && c < 0xA0)
        || (c < 0x80 && std::string_view("/\\:*?\"<>|#^[]").find(static_cast<char>(c)) != std::string_view::npos)
        || (c >= 0x200B && c <= 0x200F) || (c >= 0x2028 && c <= 0x202E) || (c >= 0x2060 && c <= 0x206F) || c == 0xFEFF
        || c == 0xFFFD;
}

} // namespace

NoteContent contentOf(NoteKind kind, std::string_view file)
{
    NoteContent content;
    switch (kind) {
    case NoteKind::html:
        content.text = textOfHtml(file);
        content.name = firstLine(content.text);
        break;
    case NoteKind::markdown:
        content.text = shownText(partsOfMarkdown(file).text);
        content.name = titleOf(titleOfMarkdown(content.text));
        break;
    case NoteKind::text:
        content.text = shownText(partsOfPlainText(file).text);
        content.name = firstLine(content.text);
        break;
    }
    return content;
}

std::string bodyOf(NoteKind kind, std::string_view file)
{
    return kind == NoteKind::html ? platform::withValidUtf8(partsOfHtml(file).body)
                                  : htmlOfText(shownText(partsOfText(kind, file).text));
}

std::string withBody(NoteKind kind, std::string_view file, std::string_view html)
{
    std::string result;
    if (kind == NoteKind::html) {
        const HtmlParts parts = partsOfHtml(file);
        result.append(parts.before).append(html).append(parts.after.empty() ? "\n" : parts.after);
        return result;
    }
    result = partsOfText(kind, file).before;
    result += withLineEndsOf(file, (kind == NoteKind::markdown ? markdownOfBody(html) : textOfHtml(html)) + "\n");
    return result;
}

std::string withMore(NoteKind kind, std::string_view file, std::string_view html)
{
    switch (kind) {
    case NoteKind::html: {
        const HtmlParts parts = partsOfHtml(file);
        std::string result;
        result.append(parts.before).append(parts.body).append(html).append(parts.after.empty() ? "\n" : parts.after);
        return result;
    }
    case NoteKind::markdown:
        return appendedToMarkdown(file, markdownOfHtml(html));
    case NoteKind::text:
        return appendedToPlainText(file, textOfHtml(html));
    }
    return std::string(file);
}

std::string fileNameOfTitle(std::string_view title)
{
    const std::string composed = platform::composed(title);
    std::string name;
    for (std::string_view rest = composed; !rest.empty();) {
        const platform::CodePoint point = platform::firstCodePoint(rest);
        const bool isBlank = !point.valid || point.value == ' ' || point.value == 0xA0 || isUnfit(point.value);
        if (!isBlank) {
            name += rest.substr(0, point.length);
        } else if (!name.empty() && !name.ends_with(' ')) {
            name += ' ';
        }
        rest.remove_prefix(point.length);
    }
    name.erase(0, std::min(name.find_first_not_of(" .~"), name.size())); // a dot would hide it
    name = shortened(name, kLongestFileName);
    name.resize(name.find_last_not_of(" .") + 1);
    return name.empty() ? "Note" : name;
}

} // namespace mervo::desk
