#pragma once

#include "platform/desk/addressbook/LazyContact.h"
#include "platform/desk/cache/CacheFile.h"
#include "platform/desk/vdir/Vdir.h"
#include "platform/files.h"

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace mervo::desk {

/// What a file of cards said when it was last read.
struct ReadCards {
    std::vector<LazyContact> contacts;
    std::string why; ///< what is damaged; empty: nothing
    bool isRead = false; ///< false: the system did not give the file, which another time it may
};

/// The contacts of files that have not changed, so that 5,000 of them need not be opened at each call. Nothing here
/// throws for the sake of the cache.
///
/// The front of the file (CacheFile.h): for each folder its path, its stamp (VdirCollection; zero: none) and the number
/// of its files; for each of these, in the order of the names, its name with NUL, its stamp (zero: not to be trusted),
/// and as one text what is damaged, the number of its cards and the cards (packed()).
class ContactCache {
public:
    /// `root` is that of the address book.
    explicit ContactCache(const std::filesystem::path& root);

    /// For listVdir; they live as long as this object.
    std::optional<std::vector<std::string_view>> names(
        const std::filesystem::path& folder, const platform::FileStamp& stamp) const;
    /// Nothing when the file was not known, or has another stamp. The contacts live as long as this object.
    std::optional<ReadCards> find(const std::filesystem::path& folder, const VdirItem& item);
    /// For the next time; a file that was written a moment ago is not kept, since its stamp does not tell enough.
    /// `item` has its stamp from before it was read, and stays where it is until `write`.
    void keep(const VdirItem& item, const ReadCards& cards);
    /// Writes what is known of the files that are listed, when anything is new or gone.
    void write(const std::vector<VdirCollection>& listed) noexcept;

private:
    struct File {
        std::string_view name;
        platform::FileStamp stamp;
        std::string_view cards;
    };
    struct Folder {
        platform::FileStamp stamp;
        std::vector<File> files; ///< by name
    };

    void read();
    const File* standing(const std::filesystem::path& folder, const VdirItem& item) const;
    std::string front(const std::vector<VdirCollection>& listed) const;
    bool isAsListed(const std::vector<VdirCollection>& listed) const;

    CacheFile file_;
    std::unordered_map<std::string_view, Folder> folders_; // by path, in the front of the file
    std::unordered_map<const VdirItem*, std::string> fresh_; // the cards
};

} // namespace mervo::desk
