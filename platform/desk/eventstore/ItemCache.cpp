#include "platform/desk/eventstore/ItemCache.h"

#include "platform/desk/cache/CacheText.h"
#include "platform/files.h"

#include <algorithm>
#include <cstring>
#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

namespace mervo::desk {
namespace {

constexpr std::uint64_t kMark = 0x33'736D'6574'69'766D; // "mvitems3"; another layout has another number
constexpr std::size_t kLongestHead = std::size_t{1} << 30U;

struct Head {
    std::uint64_t mark = kMark;
    std::uint64_t print = 0; ///< of what follows it, down to the records
    std::uint64_t size = 0; ///< of all in front of the records
    platform::FileStamp stamp;
    std::uint32_t hasStamp = 0, pathSize = 0;
};
struct Entry {
    std::uint32_t nameSize = 0, recordSize = 0, recordPrint = 0;
    std::uint8_t isTrusted = 0, isDamaged = 0, hasEvents = 0, hasTasks = 0;
    ItemStamp stamp;
    std::int64_t first = 0, last = 0;
};
static_assert(sizeof(Head) == 64 && sizeof(Entry) == 56);
constexpr std::size_t kPrinted = offsetof(Head, size);

std::uint32_t recordPrint(std::string_view record)
{
    return static_cast<std::uint32_t>(cacheChecksum(record));
}

template <typename Plain>
std::string_view bytesOf(const Plain& plain)
{
    return {reinterpret_cast<const char*>(&plain), sizeof plain};
}

/// True when there were so many.
bool readAt(const platform::Descriptor& file, std::uint64_t at, char* to, std::size_t count)
{
    while (count > 0) {
        const ssize_t got = ::pread(file.get(), to, count, static_cast<off_t>(at));
        if (got <= 0)
            return false;
        to += got;
        at += static_cast<std::uint64_t>(got);
        count -= static_cast<std::size_t>(got);
    }
    return true;
}

/// All in front of the records; empty for what is no cache of this folder.
std::string readHead(const platform::Descriptor& file, const std::filesystem::path& folder)
{
    Head head;
    struct stat status { };
    if (!file.open() || ::fstat(file.get(), &status) != 0
        || !readAt(file, 0, reinterpret_cast<char*>(&head), sizeof head) || head.mark != kMark
        || head.size < sizeof head + head.pathSize || head.size > kLongestHead
        || head.size > static_cast<std::uint64_t>(status.st_size))
        return {};
    std::string bytes(head.size, '\0');
    const bool isWhole = readAt(file, 0, bytes.data(), bytes.size())
        && cacheChecksum(std::string_view(bytes).substr(kPrinted)) == head.print
        && std::string_view(bytes).substr(sizeof head, head.pathSize) == folder.native();
    return isWhole ? bytes : std::string();
}

std::vector<CachedItem> itemsIn(std::string_view head)
{
    Head about;
    std::memcpy(&about, head.data(), sizeof about);
    head.remove_prefix(sizeof about + about.pathSize);
    std::vector<CachedItem> items;
    items.reserve(head.size() / sizeof(Entry));
    std::uint64_t at = 0;
    for (Entry entry; head.size() >= sizeof entry;) {
        std::memcpy(&entry, head.data(), sizeof entry);
        items.push_back({head.substr(sizeof entry, entry.nameSize), entry.stamp, entry.isTrusted != 0,
            entry.isDamaged != 0, entry.hasEvents != 0, entry.hasTasks != 0, entry.first, entry.last, at,
            entry.recordSize, entry.recordPrint});
        at += entry.recordSize;
        head.remove_prefix(std::min(sizeof entry + entry.nameSize + 1, head.size()));
    }
    return items;
}

/// Makes the two parts of a file, item by item.
class Builder {
public:
    explicit Builder(const VdirCollection& collection)
    {
        about_.hasStamp = collection.stamp ? 1 : 0;
        about_.stamp = collection.stamp.value_or(platform::FileStamp{});
        about_.pathSize = static_cast<std::uint32_t>(collection.folder.native().size());
        head_.append(sizeof about_, '\0').append(collection.folder.native());
    }

    void keep(const CachedItem& item, std::string_view record)
    {
        add({.recordPrint = item.print,
                .isTrusted = 1,
                .isDamaged = item.isDamaged,
                .hasEvents = item.hasEvents,
                .hasTasks = item.hasTasks,
                .stamp = item.stamp,
                .first = item.first,
                .last = item.last},
            item.name, record);
    }

    void read(const std::filesystem::path& folder, const VdirItem& item)
    {
        std::string why;
        const auto content = readItem(folder / item.name, why);
        ItemRecord record;
        record.isDamaged = true;
        if (content)
            record = readRecord(content->bytes);
        const std::string bytes = packed(record);
        const ItemStamp stamp = content ? content->stamp : item.stamp;
        add({.recordPrint = recordPrint(bytes),
                .isTrusted = content && stamp.isSettled(),
                .isDamaged = record.isDamaged,
                .hasEvents = !record.events.empty(),
                .hasTasks = !record.tasks.empty(),
                .stamp = stamp,
                .first = record.first,
                .last = record.last},
            item.name, bytes);
    }

    std::string takeHead()
    {
        about_.size = head_.size();
        head_.replace(0, sizeof about_, bytesOf(about_));
        about_.print = cacheChecksum(std::string_view(head_).substr(kPrinted));
        head_.replace(0, sizeof about_, bytesOf(about_));
        return std::move(head_);
    }
    std::string takeRecords() { return std::move(records_); }

private:
    void add(Entry entry, std::string_view name, std::string_view record)
    {
        entry.nameSize = static_cast<std::uint32_t>(name.size());
        entry.recordSize = static_cast<std::uint32_t>(record.size());
        head_.append(bytesOf(entry)).append(name).push_back('\0');
        records_ += record;
    }

    Head about_;
    std::string head_, records_;
};

/// The item as it is in the cache; null where it must be read.
const CachedItem* standing(const std::vector<CachedItem>& known, std::size_t& at, const VdirItem& item)
{
    while (at < known.size() && known[at].name < item.name)
        ++at; // its file is gone
    const bool stands =
        at < known.size() && known[at].name == item.name && known[at].stamp == item.stamp && known[at].isTrusted;
    return stands ? &known[at] : nullptr;
}

/// Earlier versions kept a database beside the folder.
void removeEarlierCache(const std::filesystem::path& folder)
{
    for (const char* end : {"", "-journal"})
        ::unlink((folder.string() + ".sqlite" + end).c_str());
}

} // namespace

std::optional<ItemRecord> CachedCollection::record(const CachedItem& item) const
{
    std::string buffer;
    const std::string_view bytes = packedRecord(item, buffer);
    if (recordPrint(bytes) == item.print)
        return unpacked(bytes);
    std::string why;
    const auto content = readItem(folder_ / item.name, why);
    return content ? std::optional(readRecord(content->bytes)) : std::nullopt;
}

std::string_view CachedCollection::packedRecord(const CachedItem& item, std::string& buffer) const
{
    if (records_)
        return std::string_view(*records_).substr(std::min<std::size_t>(item.at, records_->size()), item.size);
    buffer.resize(item.size);
    return readAt(file_, head_.size() + item.at, buffer.data(), buffer.size()) ? buffer : std::string_view();
}

void CachedCollection::readRecords() const
{
    if (records_ || items_.empty())
        return;
    std::string records(items_.back().at + items_.back().size, '\0');
    if (readAt(file_, head_.size(), records.data(), records.size()))
        records_ = std::move(records);
}

ItemCache::ItemCache(std::filesystem::path folder)
    : folder_(std::move(folder))
{
}

std::filesystem::path ItemCache::fileOf(const std::filesystem::path& folder) const
{
    return folder_ / fmt::format("{:016x}", itemFingerprint(folder.native()));
}

ItemCache::Known ItemCache::known(const std::filesystem::path& folder)
{
    Known& found = known_[folder];
    if (found)
        return found;
    auto made = std::make_shared<CachedCollection>();
    made->folder_ = folder;
    if (!folder_.empty())
        made->file_ = platform::Descriptor(::open(fileOf(folder).c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    made->head_ = readHead(made->file_, folder);
    if (!made->head_.empty()) {
        made->items_ = itemsIn(made->head_);
        Head head;
        std::memcpy(&head, made->head_.data(), sizeof head);
        if (head.hasStamp != 0)
            made->stamp_ = head.stamp;
    }
    return found = std::move(made);
}

std::optional<std::vector<std::string_view>> ItemCache::names(
    const std::filesystem::path& folder, const platform::FileStamp& stamp)
{
    const Known old = known(folder);
    if (old->stamp_ != stamp)
        return std::nullopt;
    std::vector<std::string_view> names;
    names.reserve(old->items_.size());
    for (const CachedItem& item : old->items_)
        names.push_back(item.name);
    return names;
}

std::shared_ptr<const CachedCollection> ItemCache::refresh(const VdirCollection& collection)
{
    const Known old = known(collection.folder);
    std::size_t at = 0;
    const bool isSame = old->stamp_ == collection.stamp && old->items_.size() == collection.items.size()
        && std::ranges::all_of(
            collection.items, [&](const VdirItem& item) { return standing(old->items_, at, item) != nullptr; });
    if (isSame)
        return old;
    old->readRecords();
    Builder builder(collection);
    std::string buffer;
    at = 0;
    for (const VdirItem& item : collection.items) {
        const CachedItem* kept = standing(old->items_, at, item);
        const std::string_view record = kept != nullptr ? old->packedRecord(*kept, buffer) : std::string_view();
        if (kept != nullptr && recordPrint(record) == kept->print) {
            builder.keep(*kept, record);
        } else {
            builder.read(collection.folder, item);
        }
    }
    auto fresh = std::make_shared<CachedCollection>();
    fresh->folder_ = collection.folder;
    fresh->stamp_ = collection.stamp;
    fresh->head_ = builder.takeHead();
    fresh->records_ = builder.takeRecords();
    fresh->items_ = itemsIn(fresh->head_);
    if (!folder_.empty() && !platform::createPrivateFolder(folder_)) {
        const auto ignored = platform::replaceFile(
            fileOf(collection.folder), fresh->head_ + *fresh->records_, platform::Keep::whileRunning);
        static_cast<void>(ignored); // a cache that cannot be written is done without
        removeEarlierCache(folder_);
    }
    return known_[collection.folder] = std::move(fresh);
}

} // namespace mervo::desk
