#pragma once

#include <string>
#include <string_view>

/// HTML notes as a reader sees them.
namespace mervo::desk {

/// The text of a document: a line for each block and for each part that <br> ends, items of lists behind "• " or their
/// number, cells of a table parted by tabs, everything else with its white space as HTML collapses it. Valid UTF-8
/// without NULs, no line end at its end. Never throws for what the document holds; takes time that grows with its
/// length. A document beyond the bounds of HtmlReader.h is read by taking its tags away.
std::string textOfHtml(std::string_view html);

/// The same as Markdown: bold, italic, code, links, headings, lists and rules are written in its marks. The text itself
/// stands as it is, so that Markdown in it stays Markdown.
std::string markdownOfHtml(std::string_view html);

/// A text as HTML: its special characters as entities, <br> for its line ends.
std::string htmlOfText(std::string_view text);

/// The parts of an HTML file: what stands around the body of its document, and the body. A file that is no whole
/// document is all body, but for the lines with which this desk begins one.
struct HtmlParts {
    std::string_view before, body, after;
};
HtmlParts partsOfHtml(std::string_view file);

/// With what a new file begins: it says that the file is UTF-8, which a browser would not guess.
inline constexpr std::string_view kHtmlPreamble = "<!DOCTYPE html>\n<meta charset=\"utf-8\">\n";

} // namespace mervo::desk
