#include "platform/desk/mail/MailboxMerge.h"

#include "platform/desk/mail/MessageFile.h"

#include <bit>
#include <limits>
#include <optional>
#include <string>
#include <utility>

namespace mervo::desk {
namespace {

/// Finds messages by their bases. A fingerprint and a position are all that it holds of each, side by side, so that
/// comparing a folder's names with a hundred thousand known ones does not jump about in memory for each.
class BaseTable {
public:
    explicit BaseTable(const std::vector<MessageHeader>& headers)
        : headers_(headers)
        , slots_(std::bit_ceil(headers.size() * 2 + 1))
    {
        for (std::size_t i = 0; i < headers.size(); ++i) {
            const std::string_view base = splitMaildirName(headers[i].fileName).base;
            if (Slot& slot = find(base); slot.position == kFree)
                slot = {print(base), static_cast<std::uint32_t>(i)};
        }
    }

    /// The first header with this base; nothing when there is none.
    std::optional<std::size_t> position(std::string_view base)
    {
        const Slot& slot = find(base);
        return slot.position == kFree ? std::nullopt : std::optional<std::size_t>(slot.position);
    }

private:
    static constexpr std::uint32_t kFree = std::numeric_limits<std::uint32_t>::max();
    struct Slot {
        std::uint32_t print = 0, position = kFree;
    };

    static std::uint32_t print(std::string_view base) noexcept
    {
        return static_cast<std::uint32_t>(fingerprint(base) >> 32);
    }

    /// The slot of this base, or the free one where it belongs.
    Slot& find(std::string_view base)
    {
        const std::uint32_t wanted = print(base);
        for (std::size_t at = wanted;; ++at) {
            Slot& slot = slots_[at & (slots_.size() - 1)];
            if (slot.position == kFree
                || (slot.print == wanted && splitMaildirName(headers_[slot.position].fileName).base == base))
                return slot;
        }
    }

    const std::vector<MessageHeader>& headers_;
    std::vector<Slot> slots_;
};

} // namespace

MailboxMerge::MailboxMerge(RecordChunks stored)
    : chunks_(std::move(stored))
{
    headers_.reserve(chunks_.size() * kMessagesInChunk);
    chunkOf_.reserve(headers_.capacity());
    for (const auto& [number, chunk] : chunks_) {
        sizes_[number] = chunk->records().size();
        for (const MessageRecord& record : chunk->records())
            headers_.push_back(record.header());
        chunkOf_.resize(headers_.size(), number);
    }
}

bool MailboxMerge::apply(
    const std::filesystem::path& maildir, const std::vector<MaildirEntry>& entries, IndexDatabase::Change& change)
{
    BaseTable known(headers_);
    std::vector<bool> isSeen(headers_.size());
    std::vector<const MaildirEntry*> unknown;
    for (const MaildirEntry& entry : entries) {
        if (const auto found = known.position(splitMaildirName(entry.fileName).base)) {
            isSeen[*found] = true;
            rename(*found, entry);
        } else {
            unknown.push_back(&entry);
        }
    }
    removeUnseen(isSeen);
    return add(maildir, unknown, change) == unknown.size();
}

void MailboxMerge::setAttachments(std::uint32_t id, std::int32_t count)
{
    for (std::size_t i = 0; i < headers_.size(); ++i) {
        if (headers_[i].id == id && headers_[i].attachments != count) {
            headers_[i].attachments = count;
            touched_.insert(chunkOf_[i]);
        }
    }
}

std::size_t MailboxMerge::touchedLength() const
{
    std::size_t length = 0;
    for (std::size_t i = 0; i < headers_.size(); ++i) {
        if (touched_.contains(chunkOf_[i]))
            length += recordLength(headers_[i]);
    }
    return length;
}

void MailboxMerge::write(const IndexDatabase::Folder& folder, IndexDatabase::Change& change)
{
    const auto fresh = std::make_shared<RecordMemory>(touchedLength());
    RecordChunks written;
    std::string chunk;
    std::size_t next = 0;
    for (const std::int64_t number : touched_) {
        chunk.clear();
        while (next < headers_.size() && chunkOf_[next] < number)
            ++next;
        for (; next < headers_.size() && chunkOf_[next] == number; ++next)
            appendRecord(chunk, headers_[next]);
        if (chunk.empty()) {
            change.removeChunk(folder, number);
            chunks_.erase(number);
        } else {
            change.write(folder, number, chunk);
            char* place = fresh->take(chunk.size());
            chunk.copy(place, chunk.size());
            written[number] = std::make_shared<RecordChunk>(fresh, std::string_view(place, chunk.size()));
        }
    }
    headers_.clear(); // they point into the chunks that are replaced now
    written.merge(chunks_);
    chunks_ = std::move(written);
}

std::shared_ptr<const MailboxSnapshot> MailboxMerge::finish(const std::filesystem::path& maildir)
{
    return std::make_shared<MailboxSnapshot>(maildir, std::move(chunks_));
}

void MailboxMerge::rename(std::size_t at, const MaildirEntry& entry)
{
    MessageHeader& header = headers_[at];
    if (header.isNew == entry.isNew && header.fileName == entry.fileName)
        return;
    header.fileName = texts_.keep(std::string_view(entry.fileName));
    header.isNew = entry.isNew;
    header.flags = maildirFlags(splitMaildirName(header.fileName).info).bits();
    touched_.insert(chunkOf_[at]);
}

void MailboxMerge::removeUnseen(const std::vector<bool>& isSeen)
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

std::size_t MailboxMerge::add(const std::filesystem::path& maildir, const std::vector<const MaildirEntry*>& entries,
    IndexDatabase::Change& change)
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

} // namespace mervo::desk
