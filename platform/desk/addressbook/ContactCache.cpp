#include "platform/desk/addressbook/ContactCache.h"

#include "platform/desk/cache/CacheText.h"

#include <algorithm>
#include <exception>

namespace mervo::desk {
namespace {

std::string packed(const ReadCards& cards)
{
    std::string bytes;
    put(bytes, cards.why);
    put(bytes, cards.contacts.size());
    for (const LazyContact& contact : cards.contacts)
        put(bytes, packed(*contact));
    return bytes;
}

ReadCards unpacked(std::string_view bytes)
{
    CacheTaker from(bytes);
    ReadCards cards{.contacts = {}, .why = std::string(from.text()), .isRead = true};
    const std::size_t count = from.count();
    cards.contacts.reserve(count);
    for (std::size_t i = 0; i < count; ++i)
        cards.contacts.emplace_back(from.text());
    return cards;
}

} // namespace

ContactCache::ContactCache(const std::filesystem::path& root)
    : file_("contacts", root)
{
    try {
        read();
    } catch (const std::exception&) {
        folders_.clear(); // a damaged one
    }
}

void ContactCache::read()
{
    CacheTaker from(file_.open());
    while (!from.isDone()) {
        Folder& folder = folders_[from.text()];
        folder.stamp = from.stamp();
        folder.files.resize(from.count());
        for (File& file : folder.files) {
            file.name = from.text();
            file.name.remove_suffix(1); // NUL
            file.stamp = from.stamp();
            file.cards = from.text();
        }
    }
}

std::optional<std::vector<std::string_view>> ContactCache::names(
    const std::filesystem::path& folder, const platform::FileStamp& stamp) const
{
    const auto found = folders_.find(folder.native());
    if (found == folders_.end() || found->second.stamp != stamp)
        return std::nullopt;
    std::vector<std::string_view> names;
    names.reserve(found->second.files.size());
    for (const File& file : found->second.files)
        names.push_back(file.name);
    return names;
}

const ContactCache::File* ContactCache::standing(const std::filesystem::path& folder, const VdirItem& item) const
{
    const auto found = folders_.find(folder.native());
    if (found == folders_.end())
        return nullptr;
    const auto file = std::ranges::lower_bound(found->second.files, item.name, {}, &File::name);
    const bool stands = file != found->second.files.end() && file->name == item.name && file->stamp == item.status;
    return stands ? &*file : nullptr;
}

std::optional<ReadCards> ContactCache::find(const std::filesystem::path& folder, const VdirItem& item)
{
    const File* known = standing(folder, item);
    try {
        return known == nullptr ? std::nullopt : std::optional(unpacked(known->cards));
    } catch (const std::exception&) {
        return std::nullopt;
    }
}

void ContactCache::keep(const VdirItem& item, const ReadCards& cards)
{
    if (cards.isRead && item.status.isSettled())
        fresh_[&item] = packed(cards);
}

bool ContactCache::isAsListed(const std::vector<VdirCollection>& listed) const
{
    const auto isKnown = [&](const VdirCollection& collection) {
        const auto known = folders_.find(collection.folder.native());
        return known != folders_.end() && known->second.files.size() == collection.items.size()
            && known->second.stamp == collection.stamp.value_or(platform::FileStamp());
    };
    return fresh_.empty() && folders_.size() == listed.size() && std::ranges::all_of(listed, isKnown);
}

std::string ContactCache::front(const std::vector<VdirCollection>& listed) const
{
    std::string bytes;
    for (const VdirCollection& collection : listed) {
        put(bytes, collection.folder.native());
        put(bytes, collection.stamp.value_or(platform::FileStamp()));
        put(bytes, collection.items.size());
        for (const VdirItem& item : collection.items) {
            const auto fresh = fresh_.find(&item);
            const File* known = standing(collection.folder, item);
            const bool isKept = fresh != fresh_.end() || known != nullptr;
            put(bytes, std::string_view(item.name.c_str(), item.name.size() + 1));
            put(bytes, isKept ? item.status : platform::FileStamp());
            put(bytes, fresh != fresh_.end() ? fresh->second : known != nullptr ? known->cards : std::string_view());
        }
    }
    return bytes;
}

void ContactCache::write(const std::vector<VdirCollection>& listed) noexcept
{
    try {
        if (!isAsListed(listed))
            file_.write(front(listed));
    } catch (const std::exception&) {
        return; // without a cache the next call reads the cards
    }
}

} // namespace mervo::desk
