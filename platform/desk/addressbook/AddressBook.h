#pragma once

#include "platform/desk/addressbook/LazyContact.h"
#include "platform/desk/vdir/ItemFile.h"

#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace mervo::desk {

class ContactCache;
struct VdirCollection;

/// What the address book could not do; what() is one sentence for the owner.
class ContactError final : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// A card and where it lies.
struct Card {
    LazyContact contact;
    std::shared_ptr<const std::filesystem::path> folder;
    std::string fileName;
    std::size_t index = 0; ///< which card of the file
    ItemStamp stamp; ///< of the file as it was read
    bool isGone = false;

    std::filesystem::path file() const { return *folder / fileName; }
    std::string id() const; ///< its UID; without one the file's name and the place in it
};

struct DamagedCard {
    std::filesystem::path file;
    std::string why;
};

/// A folder of .vcf files, or of folders of such: one address book. A file may hold several cards.
///
/// Everything is read at the first question. Changes stay in memory until `save`, which
/// writes all of them or none; a file that another program has changed since it was read is left alone, and the error
/// says so. What cannot be read is left out and told in `damaged`. Belongs to one thread; everything throws
/// ContactError.
class AddressBook {
public:
    explicit AddressBook(std::filesystem::path root);
    AddressBook(const AddressBook&) = delete;
    AddressBook& operator=(const AddressBook&) = delete;
    ~AddressBook();

    using CardRef = std::shared_ptr<Card>;
    /// All cards, groups too, by folder, file and place in it. New ones come last.
    const std::vector<CardRef>& cards();
    const std::vector<DamagedCard>& damaged();

    /// A new card without a name. Its file lies in the root, or where that holds only folders in the first of them that
    /// can be written.
    CardRef add();
    /// Changes a card by the functions of CardEdit.h.
    using Change = std::function<void(ContentDocument& document, ContentDocument::Node card)>;
    void edit(const CardRef& card, const Change& change);
    void remove(const CardRef& card);
    bool isChanged() const { return !open_.empty(); }
    void save();

    /// The bytes of one card, changes included.
    std::string textOf(const CardRef& card);

private:
    struct OpenFile;

    void load();
    void take(const VdirCollection& collection);
    OpenFile& openFile(const Card& card);

    std::filesystem::path root_;
    std::unique_ptr<ContactCache> cache_; // with the bytes of contacts that are not unpacked
    bool isLoaded_ = false;
    std::filesystem::path newFolder_;
    std::vector<CardRef> cards_;
    std::vector<DamagedCard> damaged_;
    std::map<std::filesystem::path, std::unique_ptr<OpenFile>> open_;
};

} // namespace mervo::desk
