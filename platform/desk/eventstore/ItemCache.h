#pragma once

#include "platform/descriptor.h"
#include "platform/desk/eventstore/ItemRecord.h"
#include "platform/desk/vdir/Vdir.h"

#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace mervo::desk {

/// Where the packed record of a file lies, with what is asked of every file first.
struct CachedItem {
    std::string_view name; ///< NUL follows
    ItemStamp stamp;
    bool isTrusted = false; ///< a later writing would have left another stamp
    bool isDamaged = false, hasEvents = false, hasTasks = false;
    std::int64_t first = 0, last = 0; ///< as in ItemRecord
    std::uint64_t at = 0; ///< of its record among the others
    std::uint32_t size = 0, print = 0;
};

/// What is known of all items of one collection, by the names of the files. Records are read when they are asked for.
class CachedCollection {
public:
    const std::vector<CachedItem>& items() const { return items_; }
    /// What the file says. Nothing for one that is damaged or, where the cache has lost its record, unreadable.
    std::optional<ItemRecord> record(const CachedItem& item) const;
    /// Before most of the records are asked for.
    void readRecords() const;

private:
    friend class ItemCache;
    std::string_view packedRecord(const CachedItem& item, std::string& buffer) const;

    std::filesystem::path folder_;
    std::optional<platform::FileStamp> stamp_; // as in VdirCollection
    std::string head_; // all in front of the records
    std::vector<CachedItem> items_;
    platform::Descriptor file_; // where the records are
    mutable std::optional<std::string> records_; // nothing: they are in the file alone
};

/// The records of all collections, in one file for each below a folder of the cache:
///
///     Head, the collection's path; for each item Entry, its name and NUL; then the packed records in the same order
///
/// Numbers lie there as in memory. The files may be deleted at any time; one that is damaged, of another version or
/// half written by a power cut is made anew. Where none can be written, what was read lasts as long as this object.
/// Nothing here throws but std::bad_alloc.
class ItemCache {
public:
    explicit ItemCache(std::filesystem::path folder);

    /// For listVdir; until the collection is refreshed.
    std::optional<std::vector<std::string_view>> names(
        const std::filesystem::path& folder, const platform::FileStamp& stamp);
    /// The collection as its files are now: read again where the stamp is another one, or too young to be trusted.
    std::shared_ptr<const CachedCollection> refresh(const VdirCollection& collection);

private:
    using Known = std::shared_ptr<const CachedCollection>;
    std::filesystem::path fileOf(const std::filesystem::path& folder) const;
    Known known(const std::filesystem::path& folder);

    std::filesystem::path folder_;
    std::map<std::filesystem::path, Known> known_; // by the collection's folder
};

} // namespace mervo::desk
