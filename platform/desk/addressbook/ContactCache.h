#pragma once

#include "platform/desk/addressbook/Contact.h"
#include "platform/desk/vdir/ItemFile.h"

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace mervo::desk {

/// What a file of cards said when it was last read.
struct ReadCards {
    std::vector<Contact> contacts;
    std::string why; ///< what is damaged; empty: nothing
    bool isRead = false; ///< false: the system did not give the file, which another time it may
};

/// The contacts of files that have not changed, so that 5,000 of them need not be opened at each call. One file below
/// the desk's cache folder for each address book; it may be deleted at any time, and a damaged one counts as none.
/// Nothing here throws for the sake of the cache.
///
/// The file: "mervo-contacts 1\n", a checksum (itemFingerprint) of what follows, then for each file its path below the
/// root, inode, size, modification time and contacts. Numbers are of 8 bytes in the machine's order, texts have their
/// length in front.
class ContactCache {
public:
    explicit ContactCache(const std::filesystem::path& root);

    /// Nothing when the file was not known, or has another stamp.
    std::optional<ReadCards> find(const std::string& file, const ItemStamp& stamp) const;
    /// For the next time; a file that was written a moment ago is not kept, since its stamp does not tell enough.
    void keep(const std::string& file, const ItemStamp& stamp, const ReadCards& cards);
    /// Writes what `find` gave and what was kept, when anything is new or gone. A full disk changes nothing.
    void write() noexcept;

private:
    struct Entry {
        ItemStamp stamp;
        std::string_view cards; // encoded, in bytes_
        mutable bool isUsed = false;
    };

    void read();

    std::filesystem::path file_;
    std::string bytes_;
    std::unordered_map<std::string_view, Entry> entries_; // by path, in bytes_
    std::string fresh_; // encoded entries
};

} // namespace mervo::desk
