#include "platform/desk/mail/HeaderIndex.h"

#include "platform/desk/mail/MessageFile.h"

#include <algorithm>
#include <new>
#include <set>
#include <stdexcept>
#include <time.h>
#include <unistd.h>
#include <utility>

namespace mervo::desk {
namespace {

namespace fs = std::filesystem;
using Folder = IndexDatabase::Folder;

constexpr std::int64_t kCoarsestClock = 2'000'000'000; // nanoseconds; some file systems count in two seconds

constexpr std::size_t kUsualChunk = kMessagesInChunk * 320; // bytes

constexpr int kMostListings = 4; // of a folder that changes while it is listed

std::int64_t now()
{
    timespec time{};
    clock_gettime(CLOCK_REALTIME, &time);
    return static_cast<std::int64_t>(time.tv_sec) * 1'000'000'000 + time.tv_nsec;
}

/// True when a change made after the listing could have left the same times.
bool isTooFresh(const Folder& folder)
{
    return std::max(folder.stamp.curChanged, folder.stamp.newChanged) > folder.scanned - kCoarsestClock;
}

/// The stored headers of one mailbox while a new listing is laid over them.
class Merge {
public:
    Merge(IndexDatabase& database, const Folder& folder)
    {
        if (folder.id == 0)
            return;
        std::string arriving;
        database.readChunks(folder,
            {.expect = [](std::size_t, std::size_t) {},
                .room =
                    [&](std::size_t bytes) {
                        arriving.assign(bytes, '\0');
                        return arriving.data();
                    },
                .take = [&](std::int64_t number, std::string_view) { keep(number, std::move(arriving)); }});
    }

    /// False when a listed message was not found under its name: another program has just renamed it.
    [[nodiscard]] bool apply(
        const fs::path& maildir, const std::vector<MaildirEntry>& entries, IndexDatabase::Change& change)
    {
        std::unordered_map<std::string_view, std::size_t> byBase;
        byBase.reserve(headers_.size());
        for (std::size_t i = 0; i < headers_.size(); ++i)
            byBase.emplace(splitMaildirName(headers_[i].fileName).base, i);
        std::vector<bool> isSeen(headers_.size());
        std::vector<const MaildirEntry*> unknown;
        for (const MaildirEntry& entry : entries) {
            const auto found = byBase.find(splitMaildirName(entry.fileName).base);
            if (found == byBase.end()) {
                unknown.push_back(&entry);
            } else {
                isSeen[found->second] = true;
                rename(found->second, entry);
            }
        }
        removeUnseen(isSeen);
        return add(maildir, unknown, change) == unknown.size();
    }

    void setAttachments(std::uint32_t id, std::int32_t count)
    {
        for (std::size_t i = 0; i < headers_.size(); ++i) {
            if (headers_[i].id == id && headers_[i].attachments != count) {
                headers_[i].attachments = count;
                touched_.insert(chunkOf_[i]);
            }
        }
    }

    bool isChanged() const noexcept { return !touched_.empty(); }

    /// Puts the changed chunks together again and writes them. What was changed is settled then.
    void write(const Folder& folder, IndexDatabase::Change& change)
    {
        std::map<std::int64_t, std::string> fresh;
        for (const std::int64_t number : touched_)
            fresh[number].reserve(kUsualChunk);
        for (std::size_t i = 0; i < headers_.size(); ++i) {
            if (const auto chunk = fresh.find(chunkOf_[i]); chunk != fresh.end())
                appendRecord(chunk->second, headers_[i]);
        }
        headers_.clear(); // they point into the chunks that are replaced now
        for (auto& [number, bytes] : fresh) {
            if (bytes.empty()) {
                change.removeChunk(folder, number);
                chunks_.erase(number);
            } else {
                change.write(folder, number, bytes);
                chunks_[number] = std::move(bytes);
            }
        }
    }

    std::shared_ptr<const MailboxSnapshot> finish(const fs::path& maildir) const
    {
        std::size_t total = 0;
        for (const auto& [number, bytes] : chunks_)
            total += bytes.size();
        RecordMemory memory(total);
        std::vector<MessageRecord> records;
        records.reserve(chunkOf_.size());
        for (const auto& [number, bytes] : chunks_) {
            char* place = memory.take(bytes.size());
            bytes.copy(place, bytes.size());
            readRecords({place, bytes.size()}, records);
        }
        return std::make_shared<MailboxSnapshot>(maildir, std::move(memory), std::move(records));
    }

private:
    void keep(std::int64_t number, std::string chunk)
    {
        std::vector<MessageRecord> records;
        readRecords(chunks_[number] = std::move(chunk), records);
        sizes_[number] = records.size();
        for (const MessageRecord& record : records)
            headers_.push_back(record.header());
        chunkOf_.resize(headers_.size(), number);
    }

    void rename(std::size_t at, const MaildirEntry& entry)
    {
        MessageHeader& header = headers_[at];
        if (header.isNew == entry.isNew && header.fileName == entry.fileName)
            return;
        header.fileName = texts_.keep(std::string_view(entry.fileName));
        header.isNew = entry.isNew;
        header.flags = maildirFlags(splitMaildirName(header.fileName).info).bits();
        touched_.insert(chunkOf_[at]);
    }

    void removeUnseen(const std::vector<bool>& isSeen)
    {
        std::size_t kept = 0;
        for (std::size_t i = 0; i < isSeen.size(); ++i) {
            if (!isSeen[i]) {
                touched_.insert(chunkOf_[i]);
                --sizes_[chunkOf_[i]];
                continue;
            }
            headers_[kept] = headers_[i];
            chunkOf_[kept++] = chunkOf_[i];
        }
        headers_.resize(kept);
        chunkOf_.resize(kept);
    }

    std::size_t add(
        const fs::path& maildir, const std::vector<const MaildirEntry*>& entries, IndexDatabase::Change& change)
    {
        if (entries.empty())
            return 0;
        std::vector<MessageHeader> added = readHeads(maildir, entries, texts_);
        headers_.reserve(headers_.size() + added.size());
        chunkOf_.reserve(headers_.capacity());
        std::uint32_t id = change.takeIds(added.size());
        std::int64_t number = sizes_.empty() ? 0 : sizes_.rbegin()->first;
        for (MessageHeader& header : added) {
            header.id = id++;
            if (sizes_[number] >= kMessagesInChunk)
                ++number;
            ++sizes_[number];
            touched_.insert(number);
            headers_.push_back(header);
            chunkOf_.push_back(number);
        }
        return added.size();
    }

    std::map<std::int64_t, std::string> chunks_; // by number
    TextStore texts_; // of messages that are in no chunk yet
    std::vector<MessageHeader> headers_; // with texts in both
    std::vector<std::int64_t> chunkOf_; // for each header
    std::map<std::int64_t, std::size_t> sizes_;
    std::set<std::int64_t> touched_;
};

} // namespace

HeaderIndex::HeaderIndex(fs::path file)
    : file_(std::move(file))
{
}

std::shared_ptr<const MailboxSnapshot> HeaderIndex::snapshot(const fs::path& maildir, bool mayBeMissing)
{
    const MaildirStamp stamp = maildirStamp(maildir, mayBeMissing);
    while (true) {
        try {
            return trySnapshot(maildir, stamp);
        } catch (const IndexError& error) {
            startAnew(error);
        } catch (const MalformedRecords& error) {
            startAnew(IndexError(error.what(), true));
        } catch (const std::bad_alloc&) { // a length out of a damaged file
            startAnew(IndexError("The mail index needs more memory than there is.", true));
        } catch (const std::length_error&) {
            startAnew(IndexError("The mail index is damaged.", true));
        }
    }
}

std::shared_ptr<const MailboxSnapshot> HeaderIndex::trySnapshot(const fs::path& maildir, const MaildirStamp& stamp)
{
    const auto known = known_.find(maildir.native());
    const bool isKnown = known != known_.end();
    if (isKnown && known->second.folder.stamp == stamp && !isTooFresh(known->second.folder))
        return known->second.snapshot;
    {
        const IndexDatabase::Reading reading(database());
        const std::optional<Folder> folder = database().folder(maildir);
        if (folder && folder->stamp == stamp && !isTooFresh(*folder)) {
            if (isKnown && known->second.folder.generation == folder->generation) {
                known->second.folder = *folder;
                return known->second.snapshot;
            }
            return (known_[maildir.native()] = {*folder, storedSnapshot(maildir, *folder)}).snapshot;
        }
    }
    return (known_[maildir.native()] = update(maildir)).snapshot;
}

std::shared_ptr<const MailboxSnapshot> HeaderIndex::storedSnapshot(const fs::path& maildir, const Folder& folder)
{
    std::optional<RecordMemory> memory;
    std::vector<MessageRecord> records;
    database().readChunks(folder,
        {.expect =
                [&](std::size_t bytes, std::size_t chunks) {
                    memory.emplace(bytes);
                    records.reserve(chunks * kMessagesInChunk);
                },
            .room = [&](std::size_t bytes) { return memory->take(bytes); },
            .take = [&](std::int64_t, std::string_view chunk) { readRecords(chunk, records); }});
    return std::make_shared<MailboxSnapshot>(maildir, std::move(*memory), std::move(records));
}

HeaderIndex::Known HeaderIndex::update(const fs::path& maildir)
{
    IndexDatabase::Change change(database());
    Folder folder = database().folder(maildir).value_or(Folder{});
    const std::int64_t storedScan = folder.scanned;
    const MaildirStamp storedStamp = folder.stamp;
    Merge merge(database(), folder);
    bool isSteady = false;
    for (int tries = 0; tries < kMostListings && !isSteady; ++tries) {
        folder.scanned = now();
        folder.stamp = maildirStamp(maildir, true);
        isSteady = merge.apply(maildir, listMaildir(maildir), change) && folder.stamp == maildirStamp(maildir, true);
    }
    const auto before = known_.find(maildir.native());
    const bool isAsBefore = before != known_.end() && before->second.folder.generation == folder.generation;
    // While the folder is fresh it is listed at every call anyhow: writing that down would change nothing.
    const bool isWorthWriting =
        merge.isChanged() || folder.id == 0 || folder.stamp != storedStamp || !isTooFresh(folder);
    if (!merge.isChanged() && isAsBefore && !isWorthWriting) {
        folder.scanned = storedScan;
        return {folder, before->second.snapshot};
    }
    if (merge.isChanged())
        ++folder.generation;
    if (isWorthWriting) {
        change.write(folder, maildir);
        if (merge.isChanged()) {
            merge.write(folder, change);
            folder.content = change.contentOf(folder);
            change.write(folder, maildir);
        }
        change.commit();
    }
    if (!merge.isChanged() && isAsBefore)
        return {folder, before->second.snapshot};
    return {folder, merge.finish(maildir)};
}

void HeaderIndex::rememberAttachments(
    const fs::path& maildir, const std::map<std::uint32_t, std::int32_t>& counts) noexcept
{
    try {
        IndexDatabase::Change change(database());
        std::optional<Folder> folder = database().folder(maildir);
        if (!folder)
            return;
        Merge merge(database(), *folder);
        for (const auto& [id, count] : counts)
            merge.setAttachments(id, count);
        merge.write(*folder, change);
        ++folder->generation;
        folder->content = change.contentOf(*folder);
        change.write(*folder, maildir);
        change.commit();
    } catch (const std::exception&) {
        return; // the next process counts again
    }
}

IndexDatabase& HeaderIndex::database()
{
    if (!database_) {
        if (!inMemory_) {
            std::error_code error;
            fs::create_directories(file_.parent_path(), error);
            fs::permissions(file_.parent_path(), fs::perms::owner_all, error);
        }
        database_ = std::make_unique<IndexDatabase>(inMemory_ ? fs::path() : file_);
    }
    return *database_;
}

/// The first damage is answered by a new file, anything else by a database of our own. In memory nothing is left to
/// try: then the error is the caller's.
void HeaderIndex::startAnew(const IndexError& reason)
{
    if (inMemory_)
        throw MailError(std::string("The mail index cannot be kept in memory: ") + reason.what());
    database_.reset();
    known_.clear();
    if (reason.isDamaged() && damages_++ == 0) {
        for (const char* ending : {"-journal", "-wal", "-shm", ""})
            unlink((file_.native() + ending).c_str());
    } else {
        inMemory_ = true;
    }
}

} // namespace mervo::desk
