#pragma once

#include "platform/desk/notebook/NoteCache.h"
#include "platform/desk/notebook/NoteContent.h"
#include "platform/desk/notebook/NoteError.h"
#include "platform/desk/notebook/NoteTree.h"
#include "platform/desk/notebook/NotesSettings.h"
#include "platform/files.h"
#include "platform/lock.h"

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

namespace mervo::desk {

enum class NotePart : std::uint8_t { name, text };

/// The owner's notes as their files are at every look. A note is known by the path of its file.
///
/// Every change is one step: a reader sees the old note or the new one, also after a crash or on a full disk. What
/// another program has written since this store read a note is never replaced; a text that only comes behind the note's
/// own is put behind what stands there now. Changes of several processes come one after the other.
///
/// Everything throws NoteError with a sentence; NoteGone for a note that is no longer there. One thread at a time.
class NoteStore {
public:
    /// `lock` is the file by which processes take turns; it is made at the first change.
    NoteStore(NotesSettings settings, std::filesystem::path lock);
    NoteStore(const NoteStore&) = delete;
    NoteStore& operator=(const NoteStore&) = delete;
    /// Writes the cache.
    ~NoteStore();

    const NotesSettings& settings() const noexcept { return settings_; }
    std::vector<NoteAccount> accounts() const;

    enum class Look {
        now,
        asBefore, ///< the list of a look less than a second ago, unless this store has changed something since
    };
    /// The notes directly in a folder, the newest first. Several columns that are read with `asBefore` agree.
    const std::vector<NoteFile>& notes(const std::filesystem::path& folder, Look look = Look::now);

    /// The name or the text of a note, of which the cache knows those whose files have not changed. Valid until the
    /// next call.
    const std::string& read(const std::filesystem::path& note, NotePart part);
    /// The same for one of many, whose file had this stamp a moment ago: of a note that cannot be read it is the file's
    /// name and no text.
    const std::string& readOfMany(const std::string& note, const platform::FileStamp& stamp, NotePart part);
    /// The HTML of a note. Of a text file it is the text as HTML.
    std::string body(const std::filesystem::path& note);
    /// HTML again: as it stands for an HTML note, as Markdown or text for the others. Front matter, the head of a
    /// document and the file's name stay.
    void setBody(const std::filesystem::path& note, std::string_view html);

    /// Makes a note in the format of the settings, named after its first line of text, and the folder if needed. Its
    /// path.
    std::filesystem::path add(const std::filesystem::path& folder, std::string_view html);
    /// Moves a note, or a folder with everything in it, under its own name or one like it. Its new path.
    std::filesystem::path move(const std::filesystem::path& what, const std::filesystem::path& folder);
    /// Into the trash; for good when it lies there already.
    void remove(const std::filesystem::path& note, const NoteFolder& folder);
    /// A new folder. Its path.
    std::filesystem::path addFolder(const std::filesystem::path& parent, std::string_view name);

private:
    struct Listing {
        std::vector<NoteFile> notes;
        std::chrono::steady_clock::time_point when;
    };
    /// What this store has read of a note, as long as its file stays as it was.
    struct Reading {
        platform::FileStamp stamp;
        std::size_t hash = 0; ///< of the bytes
        std::string name;
        std::optional<std::string> text; ///< not before it is asked for
    };
    /// The body that was asked for last.
    struct HandedOut {
        std::filesystem::path note;
        std::string body;
    };

    Reading* known(const std::string& note, const platform::FileStamp& stamp);
    Reading& readAnew(const std::string& note);
    const std::string& read(const std::string& note, const std::optional<platform::FileStamp>& stamp, NotePart part);
    std::string bytesOf(const std::filesystem::path& note, platform::FileStamp& stamp) const;
    std::string changed(const std::filesystem::path& note, std::string_view bytes, std::string_view html) const;
    platform::FileLock turn() const;
    void forget(const std::filesystem::path& note);

    NotesSettings settings_;
    std::filesystem::path lock_;
    NoteCache cache_;
    std::unordered_map<std::string, Listing> listings_; ///< by the path of the folder
    std::unordered_map<std::string, Reading> readings_; ///< by the path of the note
    HandedOut handedOut_;
    std::string unread_;
};

} // namespace mervo::desk
