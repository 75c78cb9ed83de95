#pragma once

#include <filesystem>

namespace mervo::desk {

/// Hands a note, or a folder of notes, to the program that the desktop has for it. Throws NoteError when there is none.
void openNote(const std::filesystem::path& what);

} // namespace mervo::desk
