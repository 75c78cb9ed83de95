#pragma once

#include "platform/desk/notebook/NoteTree.h"

#include <string>
#include <string_view>

/// From the bytes of a note's file to what stands in it, and back. Pure functions; NoteError only where the reader of
/// HTML is missing from the bundle.
namespace mervo::desk {

/// What a reader sees of a note.
struct NoteContent {
    std::string name; ///< its first line of text; empty when it has none
    std::string text; ///< lines parted by LF
};
NoteContent contentOf(NoteKind kind, std::string_view file);

/// The HTML of a note: the body of a document as it stands, a text with its line ends as <br>.
std::string bodyOf(NoteKind kind, std::string_view file);

/// The bytes of the file with another body, and with something more behind the one that it has. Texts get the HTML as
/// Markdown or text. What stands around the body stays.
std::string withBody(NoteKind kind, std::string_view file, std::string_view html);
std::string withMore(NoteKind kind, std::string_view file, std::string_view html);

/// What a file may be called after a title: readable, at most 120 bytes, without what other systems do not take.
std::string fileNameOfTitle(std::string_view title);

} // namespace mervo::desk
