#include "platform/desk/notebook/NotesSettings.h"

#include "platform/desk/settings/Places.h"
#include "platform/folders.h"

#include <fmt/format.h>

namespace mervo::desk {
namespace {

NoteFormat readFormat(const Table& notes)
{
    const std::string word = notes.text("format");
    if (word.empty() || word == "html")
        return NoteFormat::html;
    if (word == "markdown")
        return NoteFormat::markdown;
    notes.fail("format", fmt::format("\"format\" must be \"html\" or \"markdown\", not \"{}\".", word));
}

NotesSettings read(const Table& notes)
{
    notes.refuseUnknownKeys({"path", "format"}, "of \"notes\"");
    NotesSettings settings{.root = dataFolder() / "notes", .format = readFormat(notes)};
    if (notes.contains("path")) {
        settings.root = platform::expandTilde(notes.text("path"));
        settings.isOwnFolder = false;
        if (!settings.root.is_absolute())
            notes.fail("path", "\"path\" must start with \"/\" or \"~/\".");
    }
    return settings;
}

} // namespace

void checkNotesSection(const Table& notes)
{
    read(notes);
}

NotesSettings notesSettings(const Configuration& configuration)
{
    const auto notes = configuration.section(kNotesSection);
    return notes ? read(*notes) : NotesSettings{.root = dataFolder() / "notes"};
}

bool isFolderMissing(const NotesSettings& settings)
{
    std::error_code error;
    if (std::filesystem::exists(settings.root, error) || error)
        return false; // what cannot be looked at is said by whoever reads it
    return !settings.isOwnFolder || std::filesystem::is_symlink(settings.root, error);
}

} // namespace mervo::desk
