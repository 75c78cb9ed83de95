#pragma once

#include "platform/desk/mail/Maildir.h"
#include "platform/desk/mail/TextStore.h"

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace mervo::desk {

inline constexpr std::int32_t kAttachmentsUnknown = -1;

/// One message as lists show it. The texts lie in the snapshot that the header belongs to.
struct MessageHeader {
    std::uint32_t id = 0; ///< stays with the message while the index lives
    std::int64_t received = 0; ///< the file's modification time, nanoseconds since 1970
    std::int64_t sent = 0; ///< the Date field in seconds since 1970; the received time where there is none
    std::uint64_t size = 0; ///< bytes
    std::int32_t attachments = kAttachmentsUnknown;
    std::uint8_t flags = 0; ///< MaildirFlags::bits
    bool isNew = false; ///< lies in new
    std::string_view fileName;
    std::string_view subject, sender, messageId;
    std::string_view to; ///< the raw To field, unfolded

    MaildirFlags maildirFlags() const noexcept { return MaildirFlags::fromBits(flags); }
    std::int64_t receivedSeconds() const noexcept;
};

/// The messages of one mailbox at one moment, newest received first. Never changes; owns all its texts.
class MailboxSnapshot {
public:
    MailboxSnapshot(std::filesystem::path maildir, std::vector<MessageHeader> messages, TextStore texts);

    const std::filesystem::path& maildir() const noexcept { return maildir_; }
    const std::vector<MessageHeader>& messages() const noexcept { return messages_; }
    /// Null when there is no such message.
    const MessageHeader* withId(std::uint32_t id) const;
    const MessageHeader* withBase(std::string_view base) const;

private:
    std::filesystem::path maildir_;
    std::vector<MessageHeader> messages_;
    TextStore texts_;
    // Made when first asked.
    mutable std::unordered_map<std::uint32_t, std::size_t> byId_;
    mutable std::unordered_map<std::string_view, std::size_t> byBase_;
};

} // namespace mervo::desk
