#pragma once

#include "platform/desk/cache/CacheFile.h"
#include "platform/files.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

namespace mervo::desk {

/// The names and texts of notes whose files have not changed, so that a search need not read and parse all of them. A
/// note is known by the path of its file. A text is read when it is asked for. Nothing here throws for the sake of the
/// cache.
///
/// The front of the file (CacheFile.h): for each note its path, the stamp of its file, a hash of the file's bytes, its
/// name, the length and the checksum of its text. The rest: the texts in the same order.
class NoteCache {
public:
    explicit NoteCache(const std::filesystem::path& root);

    struct Known {
        platform::FileStamp stamp;
        std::uint64_t hash = 0; ///< of the bytes of the file
        std::string_view name;
        std::uint64_t offset = 0, length = 0, checksum = 0; ///< of the text
        bool isUsed = false;
    };
    /// Null when the note was not known, or its file has another stamp. Valid until `keep` gets the same note.
    const Known* find(std::string_view note, const platform::FileStamp& stamp);
    /// Nothing when it is damaged.
    std::optional<std::string> text(const Known& known) const;

    /// For the next time; a file that was written a moment ago is not kept, since its stamp does not tell enough.
    void keep(std::string_view note, const platform::FileStamp& stamp, std::uint64_t hash, std::string_view name,
        std::string_view text);
    /// That a note went away.
    void drop(std::string_view note);
    /// Writes what was kept and what still stands, when anything is new or gone.
    void write() noexcept;

private:
    void read();
    void open();
    bool hasGone() const;

    CacheFile file_;
    bool isOpen_ = false, isChanged_ = false;
    std::unordered_map<std::string_view, Known> known_; // by path, in the front of the file
    std::string freshFront_, freshTexts_;
};

} // namespace mervo::desk
