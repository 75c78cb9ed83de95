#include "platform/desk/mail/MailboxMerge.h"

#include "platform/desk/mail/MessageFile.h"

#include <unordered_map>
#include <utility>

namespace mervo::desk {
namespace {

constexpr std::size_t kUsualChunk = kMessagesInChunk * 320; // bytes

} // namespace

MailboxMerge::MailboxMerge(IndexDatabase& database, const IndexDatabase::Folder& folder)
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

bool MailboxMerge::apply(
    const std::filesystem::path& maildir, const std::vector<MaildirEntry>& entries, IndexDatabase::Change& change)
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

void MailboxMerge::setAttachments(std::uint32_t id, std::int32_t count)
{
    for (std::size_t i = 0; i < headers_.size(); ++i) {
        if (headers_[i].id == id && headers_[i].attachments != count) {
            headers_[i].attachments = count;
            touched_.insert(chunkOf_[i]);
        }
    }
}

void MailboxMerge::write(const IndexDatabase::Folder& folder, IndexDatabase::Change& change)
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

std::shared_ptr<const MailboxSnapshot> MailboxMerge::finish(const std::filesystem::path& maildir) const
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

void MailboxMerge::keep(std::int64_t number, std::string chunk)
{
    std::vector<MessageRecord> records;
    readRecords(chunks_[number] = std::move(chunk), records);
    sizes_[number] = records.size();
    for (const MessageRecord& record : records)
        headers_.push_back(record.header());
    chunkOf_.resize(headers_.size(), number);
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
