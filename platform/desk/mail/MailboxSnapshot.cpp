#include "platform/desk/mail/MailboxSnapshot.h"

#include <algorithm>
#include <utility>

namespace mervo::desk {
namespace {

/// Records with the times that they are sorted by beside them: sorting by way of the records alone would fetch a piece
/// of far memory for every comparison.
struct Dated {
    std::int64_t received;
    MessageRecord record;
};

bool newerFirst(const Dated& a, const Dated& b)
{
    return a.received != b.received ? a.received > b.received : a.record.fileName() > b.record.fileName();
}

} // namespace

MailboxSnapshot::MailboxSnapshot(std::filesystem::path maildir, RecordChunks chunks)
    : maildir_(std::move(maildir))
    , chunks_(std::move(chunks))
{
    // They come oldest first as a rule: turned round they are in order already.
    std::vector<Dated> dated;
    dated.reserve(chunks_.size() * kMessagesInChunk);
    for (auto chunk = chunks_.rbegin(); chunk != chunks_.rend(); ++chunk) {
        const std::vector<MessageRecord>& records = chunk->second->records();
        for (auto record = records.rbegin(); record != records.rend(); ++record)
            dated.push_back({record->received(), *record});
    }
    if (!std::is_sorted(dated.begin(), dated.end(), newerFirst))
        std::sort(dated.begin(), dated.end(), newerFirst);
    messages_.reserve(dated.size());
    for (const Dated& one : dated)
        messages_.push_back(one.record);
}

const MessageRecord* MailboxSnapshot::withId(std::uint32_t id) const
{
    if (byId_.empty()) {
        byId_.reserve(messages_.size());
        for (std::size_t i = 0; i < messages_.size(); ++i)
            byId_.emplace(messages_[i].id(), i);
    }
    const auto found = byId_.find(id);
    return found == byId_.end() ? nullptr : &messages_[found->second];
}

const MessageRecord* MailboxSnapshot::withBase(std::string_view base) const
{
    if (byBase_.empty()) {
        byBase_.reserve(messages_.size());
        for (std::size_t i = 0; i < messages_.size(); ++i)
            byBase_.emplace(messages_[i].base(), i);
    }
    const auto found = byBase_.find(base);
    return found == byBase_.end() ? nullptr : &messages_[found->second];
}

} // namespace mervo::desk
