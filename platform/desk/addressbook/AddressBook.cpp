#include "platform/desk/addressbook/AddressBook.h"

#include "platform/desk/addressbook/CardEdit.h"
#include "platform/desk/addressbook/ContactCache.h"
#include "platform/desk/vdir/Vdir.h"
#include "platform/desk/vdir/VdirCommit.h"

#include <algorithm>
#include <ctime>
#include <fmt/chrono.h>
#include <fmt/format.h>
#include <sys/random.h>

namespace mervo::desk {
namespace {

namespace fs = std::filesystem;
using Node = ContentDocument::Node;

constexpr const char* kExtension = ".vcf";
constexpr const char* kComponent = "VCARD";

/// RFC 9562, version 4.
std::string newUuid()
{
    unsigned char random[16] = {};
    if (getrandom(random, sizeof random, 0) != sizeof random)
        throw ContactError("The system has no random numbers.");
    random[6] = static_cast<unsigned char>((random[6] & 0x0F) | 0x40);
    random[8] = static_cast<unsigned char>((random[8] & 0x3F) | 0x80);
    std::string text;
    for (std::size_t i = 0; i < sizeof random; ++i)
        text += fmt::format("{}{:02x}", i == 4 || i == 6 || i == 8 || i == 10 ? "-" : "", random[i]);
    return text;
}

/// The cards of a file; `stamp` becomes that of the bytes which were read.
ReadCards readCards(const fs::path& file, ItemStamp& stamp)
{
    ReadCards cards;
    auto item = readItem(file, cards.why);
    if (!item)
        return cards;
    stamp = item->stamp;
    cards.isRead = true;
    const ContentDocument document(std::move(item->bytes));
    for (const Node node : document.components(document.root(), kComponent))
        cards.contacts.push_back(readContact(document, node));
    if (cards.contacts.empty()) {
        cards.why = "it holds no card";
    } else if (!document.isBalanced()) {
        cards.why = "a card in it does not end, or an end has no beginning";
    }
    return cards;
}

template <typename Work>
void inContactTerms(const Work& work)
{
    try {
        work();
    } catch (const VdirError& error) {
        throw ContactError(error.what());
    }
}

} // namespace

/// A file with changes that are not saved yet.
struct AddressBook::OpenFile {
    OpenFile(std::string bytes, bool isFresh)
        : original(isFresh ? std::string() : bytes)
        , isNew(isFresh)
        , document(std::move(bytes))
        , cards(document.components(document.root(), kComponent))
        , isRemoved(cards.size())
    {
    }

    std::string original;
    bool isNew;
    ContentDocument document;
    std::vector<Node> cards;
    std::vector<bool> isRemoved;
    std::vector<bool> isEdited = std::vector<bool>(cards.size());
};

std::string Card::id() const
{
    return contact->uid.empty() ? fmt::format("{}#{}", fileName, index) : contact->uid;
}

AddressBook::AddressBook(fs::path root)
    : root_(std::move(root))
{
}

AddressBook::~AddressBook() = default;

const std::vector<AddressBook::CardRef>& AddressBook::cards()
{
    load();
    return cards_;
}

const std::vector<DamagedCard>& AddressBook::damaged()
{
    load();
    return damaged_;
}

void AddressBook::load()
{
    if (isLoaded_)
        return;
    inContactTerms([&] { settleVdir(root_); });
    cache_ = std::make_unique<ContactCache>(root_);
    const VdirListing listing = listVdir(root_, kExtension,
        [&](const fs::path& folder, const platform::FileStamp& stamp) { return cache_->names(folder, stamp); });
    if (!listing.fault.empty())
        throw ContactError(fmt::format("The folder “{}” cannot be read ({}).", root_.string(), listing.fault));
    isLoaded_ = true;
    newFolder_ = root_;
    const auto isRoot = [](const VdirCollection& each) { return each.id == "."; };
    if (std::ranges::none_of(listing.collections, isRoot)) {
        const auto writable = std::ranges::find_if(listing.collections, &VdirCollection::isWritable);
        if (writable != listing.collections.end())
            newFolder_ = writable->folder;
    }
    for (const SkippedFile& skipped : listing.skipped)
        damaged_.push_back({skipped.file, skipped.why});
    for (const VdirCollection& collection : listing.collections)
        take(collection);
    cache_->write(listing.collections);
}

void AddressBook::take(const VdirCollection& collection)
{
    const auto folder = std::make_shared<const fs::path>(collection.folder);
    for (const VdirItem& item : collection.items) {
        ItemStamp stamp = item.stamp;
        auto cards = cache_->find(collection.folder, item);
        if (!cards) {
            cards = readCards(*folder / item.name, stamp);
            cache_->keep(item, *cards);
        }
        if (!cards->why.empty())
            damaged_.push_back({*folder / item.name, cards->why});
        for (std::size_t index = 0; index < cards->contacts.size(); ++index)
            cards_.push_back(
                std::make_shared<Card>(Card{std::move(cards->contacts[index]), folder, item.name, index, stamp}));
    }
}

AddressBook::OpenFile& AddressBook::openFile(const Card& card)
{
    const fs::path file = card.file();
    auto& open = open_[file];
    if (open)
        return *open;
    std::string why;
    auto item = readItem(file, why);
    if (!item || item->stamp != card.stamp) {
        open_.erase(file);
        throw ContactError(fmt::format(
            "{} cannot be changed: {}.", file.string(), item ? "another program has changed it meanwhile" : why));
    }
    open = std::make_unique<OpenFile>(std::move(item->bytes), false);
    return *open;
}

AddressBook::CardRef AddressBook::add()
{
    load();
    const std::string uid = newUuid();
    auto card = std::make_shared<Card>();
    card->folder = std::make_shared<const fs::path>(newFolder_);
    card->fileName = uid + kExtension;
    auto& open = open_[card->file()];
    open = std::make_unique<OpenFile>(emptyCard(uid), true);
    card->contact = readContact(open->document, open->cards.front());
    open->isEdited.front() = true;
    cards_.push_back(card);
    return card;
}

void AddressBook::edit(const CardRef& card, const Change& change)
{
    OpenFile& open = openFile(*card);
    const Node node = open.cards.at(card->index);
    change(open.document, node);
    open.isEdited[card->index] = true;
    card->contact = readContact(open.document, node);
}

void AddressBook::remove(const CardRef& card)
{
    OpenFile& open = openFile(*card);
    open.document.remove(open.cards.at(card->index));
    open.isRemoved[card->index] = true;
    card->isGone = true;
    std::erase(cards_, card);
}

void AddressBook::save()
{
    const std::string now = fmt::format("{:%Y%m%dT%H%M%SZ}", fmt::gmtime(std::time(nullptr)));
    VdirCommit commit(root_);
    for (auto& [file, open] : open_) {
        if (std::ranges::all_of(open->isRemoved, [](bool isRemoved) { return isRemoved; })) {
            if (!open->isNew)
                commit.remove(file, open->original);
            continue;
        }
        for (std::size_t index = 0; index < open->cards.size(); ++index) {
            if (open->isEdited[index] && !open->isRemoved[index])
                finishCard(open->document, open->cards[index], now);
        }
        if (open->isNew) {
            commit.create(file, open->document.text());
        } else {
            commit.replace(file, open->original, open->document.text());
        }
    }
    if (!commit.empty())
        inContactTerms([&] { commit.commit(); });
    open_.clear();
}

std::string AddressBook::textOf(const CardRef& card)
{
    const fs::path path = card->file();
    const auto open = open_.find(path);
    if (open != open_.end())
        return open->second->document.bytes(open->second->cards.at(card->index));
    std::string why;
    auto item = readItem(path, why);
    if (!item || item->stamp != card->stamp)
        throw ContactError(fmt::format("{} cannot be read as it was.", path.string()));
    const OpenFile file(std::move(item->bytes), false);
    return file.document.bytes(file.cards.at(card->index));
}

} // namespace mervo::desk
