#include "platform/desk/mail/MailboxSnapshot.h"

#include <algorithm>
#include <utility>

namespace mervo::desk {
namespace {

bool newerFirst(const MessageRecord& a, const MessageRecord& b)
{
    return a.received() != b.received() ? a.received() > b.received() : a.fileName() > b.fileName();
}

} // namespace

MailboxSnapshot::MailboxSnapshot(
    std::filesystem::path maildir, std::vector<RecordMemory> memory, std::vector<MessageRecord> messages)
    : maildir_(std::move(maildir))
    , memory_(std::move(memory))
    , messages_(std::move(messages))
{
    // They come oldest first as a rule: turned round they are in order already.
    std::reverse(messages_.begin(), messages_.end());
    if (!std::is_sorted(messages_.begin(), messages_.end(), newerFirst))
        std::sort(messages_.begin(), messages_.end(), newerFirst);
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
