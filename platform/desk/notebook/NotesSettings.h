#pragma once

#include "platform/desk/settings/Configuration.h"

#include <filesystem>

/// Notes in desk.toml:
///
///     [notes]
///     path = "~/Notes"   # default: "notes" in the desk's data folder
///     format = "html"    # or "markdown": what a new note becomes
namespace mervo::desk {

enum class NoteFormat { html, markdown };

struct NotesSettings {
    std::filesystem::path root;
    NoteFormat format = NoteFormat::html;
    bool isOwnFolder = true; ///< the desk's own, which it makes; one that the owner names must be there
};

void checkNotesSection(const Table& notes);
inline constexpr Section kNotesSection{"notes", "[notes]", checkNotesSection};

NotesSettings notesSettings(const Configuration& configuration);

/// True where the owner's folder is not there, and where a link in the place of either leads nowhere.
bool isFolderMissing(const NotesSettings& settings);

} // namespace mervo::desk
