#pragma once

#include "platform/files.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// Accounts, folders and notes as the files below one root show them:
///
///     <root>/<account>/<folder>/.../<note>.html
///     <root>/<folder>/<note>.html       a folder of the account "Local"
///     <root>/<note>.html                in the root itself, which is a folder of "Local" then
///
/// A folder directly below the root is an account when it holds no notes but folders with notes, and is no trash.
/// Folders that hold no notes at any depth are shown when they hold nothing at all. Hidden folders and files, and files
/// of other kinds, are not seen. A linked folder is followed when it leads out of the root, once, and not back to where
/// the root is.
namespace mervo::desk {

enum class NoteKind : std::uint8_t { html, markdown, text };

/// By the suffix of a file's name, in any letter case; nothing for a file that is no note.
std::optional<NoteKind> noteKind(std::string_view fileName) noexcept;

/// Whether a folder of this name is a trash: "Recently Deleted" or what a Mac calls it in other languages. Folders in
/// it belong to it and are not shown.
bool isTrashName(std::string_view folderName);
inline constexpr const char* kTrashName = "Recently Deleted";
inline constexpr const char* kLocalAccount = "Local";
inline constexpr const char* kDefaultFolder = "Notes";

struct NoteFolder {
    std::filesystem::path path;
    std::string name; ///< of one line
    std::filesystem::path parent = {}; ///< the folder that it is shown in; empty: the account
    std::filesystem::path trash = {}; ///< where its notes go when they are deleted; may not be there
    bool isTrash = false;
};

struct NoteAccount {
    std::string name;
    std::vector<NoteFolder> folders = {}; ///< all of them, parents before their children, by name
    std::filesystem::path newFolder = {}; ///< the default folder; it may not be there
};

struct NoteFile {
    std::string name; ///< of the file
    NoteKind kind = NoteKind::html;
    std::int64_t modified = 0; ///< nanoseconds since 1970
    platform::FileStamp stamp = {};
};

/// Never empty: without any note there is the account "Local" with a folder that is not there yet. "Local" comes first.
/// Throws NoteError when the root is there and cannot be read.
std::vector<NoteAccount> noteAccounts(const std::filesystem::path& root);

/// The notes directly in a folder, the newest first; none when the folder is not there. Throws NoteError.
std::vector<NoteFile> notesIn(const std::filesystem::path& folder);
/// How many there are.
std::size_t countNotes(const std::filesystem::path& folder);

/// A text as one line: blanks for control characters, U+FFFD for what is not UTF-8.
std::string onOneLine(std::string_view text);

} // namespace mervo::desk
