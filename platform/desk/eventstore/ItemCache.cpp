#include "platform/desk/eventstore/ItemCache.h"

#include "platform/desk/eventstore/ItemRecord.h"
#include "platform/files.h"
#include "platform/sqlite/Blob.h"
#include "platform/sqlite/Error.h"
#include "platform/sqlite/Statement.h"
#include "platform/sqlite/Transaction.h"
#include "platform/unified_log.h"

#include <cstring>

namespace mervo::desk {
namespace {

constexpr std::chrono::seconds kWaitForLock(2);
constexpr std::int64_t kVersion = 2;

/// In front of each record; the name and the record follow.
struct Header {
    std::uint32_t nameSize = 0, recordSize = 0;
    ItemStamp stamp;
    std::int64_t first = 0, last = 0;
    std::uint8_t isTrusted = 0, isDamaged = 0, hasEvents = 0, hasTasks = 0;
    std::uint32_t unused = 0;
};
static_assert(sizeof(Header) == 56 && std::is_trivially_copyable_v<Header>);

/// Like itemFingerprint(), eight bytes at a time.
std::int64_t checksum(std::string_view bytes)
{
    std::uint64_t value = bytes.size();
    while (bytes.size() >= sizeof value) {
        std::uint64_t word = 0;
        std::memcpy(&word, bytes.data(), sizeof word);
        value = (value ^ word) * 0x9E3779B97F4A7C15U;
        value ^= value >> 29U;
        bytes.remove_prefix(sizeof word);
    }
    return static_cast<std::int64_t>(value ^ itemFingerprint(bytes));
}

/// Goes through the entries of a collection, which are in the order of their names.
class Entries {
public:
    explicit Entries(std::string_view data)
        : rest_(data)
    {
        read();
    }
    bool atEnd() const { return isOver_; }
    const Header& header() const { return header_; }
    std::string_view name() const { return rest_.substr(sizeof header_, header_.nameSize); }
    std::string_view whole() const { return rest_.substr(0, size()); }
    void next()
    {
        rest_.remove_prefix(size());
        read();
    }

private:
    std::size_t size() const { return sizeof header_ + header_.nameSize + header_.recordSize; }
    void read()
    {
        isOver_ = rest_.size() < sizeof header_;
        if (isOver_)
            return;
        std::memcpy(&header_, rest_.data(), sizeof header_);
        isOver_ = size() > rest_.size();
    }

    std::string_view rest_;
    Header header_;
    bool isOver_ = false;
};

std::string makeEntry(const std::filesystem::path& folder, const VdirItem& item)
{
    std::string why;
    const auto content = readItem(folder / item.name, why);
    ItemRecord record;
    record.isDamaged = true;
    if (content)
        record = readRecord(content->bytes);
    const std::string bytes = packed(record);
    Header header;
    header.nameSize = static_cast<std::uint32_t>(item.name.size());
    header.recordSize = static_cast<std::uint32_t>(bytes.size());
    header.stamp = content ? content->stamp : item.stamp;
    header.isTrusted = content && header.stamp.isSettled() ? 1 : 0;
    header.isDamaged = record.isDamaged ? 1 : 0;
    header.hasEvents = record.events.empty() ? 0 : 1;
    header.hasTasks = record.tasks.empty() ? 0 : 1;
    header.first = record.first;
    header.last = record.last;
    return std::string(reinterpret_cast<const char*>(&header), sizeof header) + item.name + bytes;
}

std::vector<CachedItem> itemsIn(std::string_view data)
{
    std::vector<CachedItem> items;
    for (Entries entries(data); !entries.atEnd(); entries.next()) {
        const Header& header = entries.header();
        const std::string_view name = entries.name();
        items.push_back({name, header.stamp, header.isDamaged != 0, header.hasEvents != 0, header.hasTasks != 0,
            header.first, header.last, {name.data() + name.size(), header.recordSize}});
    }
    return items;
}

bool stands(const Entries& entries, const VdirItem& item)
{
    return !entries.atEnd() && entries.name() == item.name && entries.header().stamp == item.stamp
        && entries.header().isTrusted != 0;
}

} // namespace

ItemCache::ItemCache(std::filesystem::path file)
    : file_(std::move(file))
{
}

ItemCache::~ItemCache() = default;

CachedCollection ItemCache::refresh(const VdirCollection& collection)
{
    CachedCollection fresh{load(collection.folder), {}};
    std::string changed;
    bool isChanged = false;
    Entries old(fresh.bytes);
    std::size_t kept = 0; // bytes at the front that stay as they are
    for (const VdirItem& item : collection.items) {
        while (!old.atEnd() && old.name() < item.name) {
            isChanged = true; // its file is gone
            old.next();
        }
        const bool isKept = stands(old, item);
        isChanged = isChanged || !isKept;
        if (isChanged && changed.empty())
            changed.assign(fresh.bytes, 0, kept);
        const std::string_view entry = isKept ? old.whole() : std::string_view();
        if (isKept && !isChanged)
            kept += entry.size();
        else
            changed += isKept ? std::string(entry) : makeEntry(collection.folder, item);
        if (!old.atEnd() && old.name() == item.name)
            old.next();
    }
    isChanged = isChanged || kept != fresh.bytes.size();
    if (isChanged) {
        fresh.bytes = changed.empty() ? fresh.bytes.substr(0, kept) : std::move(changed);
        store(collection.folder, fresh.bytes);
    }
    fresh.items = itemsIn(fresh.bytes);
    return fresh;
}

void ItemCache::open()
{
    if (database_ != nullptr)
        return;
    const bool isOnDisk = !file_.empty() && !platform::createPrivateFolder(file_.parent_path());
    database_ =
        std::make_unique<sqlite::Connection>(isOnDisk ? file_ : ":memory:", sqlite::Access::readWrite, kWaitForLock);
    database_->execute("PRAGMA page_size = 32768; PRAGMA synchronous = OFF; PRAGMA journal_mode = TRUNCATE");
    std::int64_t found = 0;
    {
        sqlite::Statement version(*database_, "PRAGMA user_version");
        version.step();
        found = version.integer(0);
    }
    if (found != kVersion) {
        database_->execute("DROP TABLE IF EXISTS collection; CREATE TABLE collection(path BLOB PRIMARY KEY, "
                           "fingerprint INTEGER NOT NULL, data BLOB NOT NULL); PRAGMA user_version = 2");
    }
}

/// A file that cannot be used is thrown away once, and then done without.
template <typename Work>
void ItemCache::attempt(Work work) noexcept
{
    try {
        try {
            open();
            work();
        } catch (const sqlite::Error& error) {
            database_.reset();
            std::error_code ignored;
            if (error.isDamage() || error.isMisfit())
                std::filesystem::remove(file_, ignored);
            else
                file_.clear();
            open();
            work();
        }
    } catch (const std::exception& error) {
        platform::logError("Calendars", std::string("the cache of items is not used: ") + error.what());
        file_.clear();
        database_.reset();
    }
}

std::string ItemCache::load(const std::filesystem::path& folder)
{
    std::string data;
    attempt([&] {
        data.clear();
        const sqlite::Transaction together(*database_, sqlite::Transaction::Lock::deferred);
        sqlite::Statement query(*database_, "SELECT rowid, fingerprint FROM collection WHERE path = ?");
        query.bindBytes(folder.native());
        if (!query.step())
            return;
        const sqlite::Blob blob(*database_, "collection", "data", query.integer(0));
        data.resize(blob.size());
        blob.read(data.data());
        if (query.integer(1) != checksum(data))
            data.clear();
    });
    return data;
}

void ItemCache::store(const std::filesystem::path& folder, std::string_view data)
{
    attempt([&] {
        sqlite::Statement insert(
            *database_, "INSERT OR REPLACE INTO collection(path, fingerprint, data) VALUES(?, ?, ?)");
        insert.bindBytes(folder.native()).bind(checksum(data)).bindBytes(data).run();
    });
}

} // namespace mervo::desk
