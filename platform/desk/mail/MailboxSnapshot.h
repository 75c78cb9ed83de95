#pragma once

#include "platform/desk/mail/RecordChunks.h"

#include <cstdint>
#include <filesystem>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace mervo::desk {

/// The messages of one mailbox at one moment, newest received first. Never changes; owns the bytes of its records.
class MailboxSnapshot {
public:
    MailboxSnapshot(std::filesystem::path maildir, RecordChunks chunks);

    const std::filesystem::path& maildir() const noexcept { return maildir_; }
    const std::vector<MessageRecord>& messages() const noexcept { return messages_; }
    const RecordChunks& chunks() const noexcept { return chunks_; }
    /// Null when there is no such message.
    const MessageRecord* withId(std::uint32_t id) const;
    const MessageRecord* withBase(std::string_view base) const;

private:
    std::filesystem::path maildir_;
    RecordChunks chunks_;
    std::vector<MessageRecord> messages_;
    // Made when first asked.
    mutable std::unordered_map<std::uint32_t, std::size_t> byId_;
    mutable std::unordered_map<std::string_view, std::size_t> byBase_;
};

} // namespace mervo::desk
