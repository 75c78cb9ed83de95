#pragma once

#include "platform/desk/vdir/Vdir.h"
#include "platform/sqlite/Connection.h"

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace mervo::desk {

/// The packed record of a file, with what is asked of every file first.
struct CachedItem {
    std::string_view name;
    ItemStamp stamp;
    bool isDamaged = false, hasEvents = false, hasTasks = false;
    std::int64_t first = 0, last = 0; ///< as in ItemRecord
    std::string_view record;
};

/// All records of one collection, by the names of the files. Owns the bytes that they point into.
struct CachedCollection {
    std::string bytes;
    std::vector<CachedItem> items;
};

/// The records of all collections, in a database of the cache folder:
///
///     collection(path, fingerprint, data)
///
/// It may be deleted at any time. One that is damaged or from another version is made anew; where none can be written,
/// it is in memory and lasts as long as this object. Nothing is synced: what a power cut leaves is found by the
/// fingerprints. Nothing here throws but std::bad_alloc.
class ItemCache {
public:
    explicit ItemCache(std::filesystem::path file);
    ~ItemCache();
    ItemCache(const ItemCache&) = delete;
    ItemCache& operator=(const ItemCache&) = delete;

    /// The collection as its files are now: read again where the stamp is another one, or too young to be trusted.
    CachedCollection refresh(const VdirCollection& collection);

private:
    std::string load(const std::filesystem::path& folder);
    void store(const std::filesystem::path& folder, std::string_view data);
    void open();
    template <typename Work>
    void attempt(Work work) noexcept;

    std::filesystem::path file_;
    std::unique_ptr<sqlite::Connection> database_;
};

} // namespace mervo::desk
