#pragma once

#include <string>
#include <string_view>

/// Notes of Markdown and of plain text.
namespace mervo::desk {

/// The parts of a text file: a byte order mark and the front matter of Markdown (the lines between "---" and "---" at
/// its very start), which every change keeps, and the text.
struct TextParts {
    std::string_view before, text;
};
TextParts partsOfMarkdown(std::string_view file);
TextParts partsOfPlainText(std::string_view file);

/// A text as it is shown: lines parted by LF, valid UTF-8 without NULs, no line end at its end.
std::string shownText(std::string_view text);

/// The first heading or line of a Markdown text without its marks: what a reader sees as its title. Empty when no line
/// has a text.
std::string titleOfMarkdown(std::string_view shown);

/// The bytes of a file with another text behind its own. A paragraph is parted from what stands there by an empty line,
/// an item continues a list. Uses the file's own line ends.
std::string appendedToMarkdown(std::string_view file, std::string_view addition);
/// The same, on the next line.
std::string appendedToPlainText(std::string_view file, std::string_view addition);

/// A whole body of HTML as Markdown: a first block that is all bold is the title, and becomes a heading.
std::string markdownOfBody(std::string_view html);

/// The text with the line ends of the file that it goes into.
std::string withLineEndsOf(std::string_view file, std::string_view text);

} // namespace mervo::desk
