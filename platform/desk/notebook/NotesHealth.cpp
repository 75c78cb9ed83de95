#include "platform/desk/notebook/NotesHealth.h"

#include "platform/desk/health/Findings.h"
#include "platform/desk/notebook/HtmlReader.h"
#include "platform/desk/notebook/NoteError.h"
#include "platform/desk/notebook/NoteTree.h"
#include "platform/desk/notebook/NotesSettings.h"
#include "platform/desk/settings/Places.h"
#include "platform/files.h"

#include <fmt/format.h>
#include <unistd.h>

namespace mervo::desk {
namespace {

namespace fs = std::filesystem;

constexpr const char* kId = "desk.notes";
constexpr const char* kLabel = "Notes";

std::string counted(std::size_t count, std::string_view one, std::string_view many)
{
    return fmt::format("{} {}", count, count == 1 ? one : many);
}

struct NoteCount {
    std::size_t notes = 0, folders = 0;
    std::vector<fs::path> unreadable;
    std::vector<fs::path> long_; ///< HTML that is read by taking its tags away
};

void countFolder(const NoteFolder& folder, NoteCount& count)
{
    ++count.folders;
    for (const NoteFile& note : notesIn(folder.path)) {
        ++count.notes;
        const fs::path file = folder.path / note.name;
        std::error_code error;
        const auto size = fs::file_size(file, error);
        if (error || size > platform::kLongestFile || ::access(file.c_str(), R_OK) != 0) {
            count.unreadable.push_back(file);
        } else if (note.kind == NoteKind::html && size > kLongestParsedHtml) {
            count.long_.push_back(file);
        }
    }
}

std::string longWords(const NoteCount& count)
{
    return count.long_.empty() ? ""
                               : fmt::format("; {} read without its formatting for its length, such as {}",
                                   counted(count.long_.size(), "note is", "notes are"), count.long_.front().string());
}

Finding countFinding(const NotesSettings& settings, const std::vector<NoteAccount>& accounts)
{
    NoteCount count;
    for (const NoteAccount& account : accounts) {
        for (const NoteFolder& folder : account.folders)
            countFolder(folder, count);
    }
    const std::string detail = fmt::format("{}: {} in {}{}; new ones go to {} as {}", settings.root.string(),
        counted(count.notes, "note", "notes"), counted(count.folders, "folder", "folders"), longWords(count),
        accounts.front().newFolder.string(), settings.format == NoteFormat::html ? "HTML" : "Markdown");
    if (count.unreadable.empty())
        return makeFinding(kId, kLabel, detail);
    return makeFinding(kId, kLabel,
        fmt::format("{}. {} be read, such as {}", detail,
            counted(count.unreadable.size(), "note cannot", "notes cannot"), count.unreadable.front().string()),
        "Make these files readable for this user; a note holds 16 MiB at most.");
}

} // namespace

std::vector<Finding> examineNotes(const Configuration& configuration)
{
    const NotesSettings settings = notesSettings(configuration);
    if (isFolderMissing(settings)) {
        return {makeFinding(kId, kLabel, fmt::format("the folder {} is not there", settings.root.string()),
            fmt::format("Make it, or correct \"path\" of [notes] in {}.", configurationFile().string()))};
    }
    try {
        return {countFinding(settings, noteAccounts(settings.root))};
    } catch (const NoteError& failure) {
        return {makeFinding(kId, kLabel, failure.what(), "Make the folder readable for this user.")};
    }
}

} // namespace mervo::desk
