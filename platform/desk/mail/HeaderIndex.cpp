#include "platform/desk/mail/HeaderIndex.h"

#include "platform/desk/mail/MailboxMerge.h"

#include <algorithm>
#include <new>
#include <stdexcept>
#include <time.h>
#include <unistd.h>
#include <utility>

namespace mervo::desk {
namespace {

namespace fs = std::filesystem;
using Folder = IndexDatabase::Folder;

constexpr std::int64_t kCoarsestClock = 2'000'000'000; // nanoseconds; some file systems count in two seconds

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

} // namespace

HeaderIndex::HeaderIndex(fs::path file)
    : file_(std::move(file))
{
}

std::shared_ptr<const MailboxSnapshot> HeaderIndex::snapshot(const fs::path& maildir, WhenMissing whenMissing)
{
    const MaildirStamp stamp = maildirStamp(maildir, whenMissing);
    while (true) {
        try {
            return trySnapshot(maildir, stamp);
        } catch (const IndexError& error) {
            startAnew(error);
        } catch (const sqlite::Error& error) {
            startAnew(IndexError(error));
        } catch (const MalformedRecords& error) {
            startAnew(IndexError(error.what()));
        } catch (const std::bad_alloc&) { // a length out of a damaged file
            startAnew(IndexError("The mail index needs more memory than there is."));
        } catch (const std::length_error&) {
            startAnew(IndexError("The mail index is damaged."));
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
    return std::make_shared<MailboxSnapshot>(maildir, database().readChunks(folder));
}

HeaderIndex::Known HeaderIndex::update(const fs::path& maildir)
{
    IndexDatabase::Change change(database());
    Folder folder = database().folder(maildir).value_or(Folder{});
    const std::int64_t storedScan = folder.scanned;
    const MaildirStamp storedStamp = folder.stamp;
    const auto before = known_.find(maildir.native());
    const bool isAsBefore = before != known_.end() && before->second.folder.generation == folder.generation;
    MailboxMerge merge(isAsBefore ? before->second.snapshot->chunks() : database().readChunks(folder));
    bool isSteady = false;
    for (int tries = 0; tries < kMostListings && !isSteady; ++tries) {
        folder.scanned = now();
        folder.stamp = maildirStamp(maildir, WhenMissing::isEmpty);
        isSteady = merge.apply(maildir, listMaildir(maildir), change)
            && folder.stamp == maildirStamp(maildir, WhenMissing::isEmpty);
    }
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
        MailboxMerge merge(database().readChunks(*folder));
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
