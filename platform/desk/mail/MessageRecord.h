#pragma once

#include "platform/desk/mail/Maildir.h"
#include "platform/desk/mail/MaildirFlags.h"

#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

/// The headers of messages as the index keeps them. Some hundred records are one chunk, which is one blob of the index:
/// reading a mailbox takes a few large reads, and a changed flag rewrites one chunk. A record is used where it lies, so
/// that a mailbox of a hundred thousand messages is read without taking it apart. The bytes are those of this machine:
/// the index is a cache and never leaves it.
namespace mervo::desk {

inline constexpr std::int32_t kAttachmentsUnknown = -1;
inline constexpr std::size_t kMessagesInChunk = 512;

/// One message as lists show it, taken apart.
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
};

/// The same within a chunk: a pointer, good while the chunk's bytes are.
class MessageRecord {
public:
    std::uint32_t id() const noexcept { return fixed().id; }
    std::int64_t received() const noexcept { return fixed().received; }
    std::int64_t receivedSeconds() const noexcept;
    std::int64_t sent() const noexcept { return fixed().sent; }
    std::uint64_t size() const noexcept { return fixed().size; }
    std::int32_t attachments() const noexcept { return fixed().attachments; }
    MaildirFlags flags() const noexcept { return MaildirFlags::fromBits(fixed().flags); }
    bool isNew() const noexcept { return fixed().isNew != 0; }
    std::string_view fileName() const noexcept { return text(0); }
    std::string_view base() const noexcept { return splitMaildirName(fileName()).base; }
    std::string_view subject() const noexcept { return text(1); }
    std::string_view sender() const noexcept { return text(2); }
    std::string_view messageId() const noexcept { return text(3); }
    std::string_view to() const noexcept { return text(4); }

    MessageHeader header() const noexcept;

private:
    static constexpr std::size_t kTexts = 5;

    /// What every record begins with; the texts follow, without separators, then bytes up to the next multiple of 8.
    struct FixedPart {
        std::int64_t received, sent;
        std::uint64_t size;
        std::uint32_t id;
        std::int32_t attachments;
        std::uint32_t ends[kTexts]; // of the texts, counted from the first one's start
        std::uint8_t flags, isNew, unused[2];
    };

    explicit MessageRecord(const FixedPart* fixed) noexcept
        : fixed_(fixed)
    {
    }
    const FixedPart& fixed() const noexcept { return *fixed_; }
    std::string_view text(std::size_t which) const noexcept
    {
        const char* texts = reinterpret_cast<const char*>(fixed_ + 1);
        const std::uint32_t start = which == 0 ? 0 : fixed_->ends[which - 1];
        return {texts + start, fixed_->ends[which] - start};
    }

    const FixedPart* fixed_;

    friend void appendRecord(std::string& chunk, const MessageHeader& header);
    friend std::size_t recordLength(const MessageHeader& header) noexcept;
    friend void readRecords(std::string_view chunk, std::vector<MessageRecord>& records);
};

/// Bytes that are no chunk.
class MalformedRecords final : public std::runtime_error {
public:
    MalformedRecords();
};

void appendRecord(std::string& chunk, const MessageHeader& header);

/// The bytes that a record of this header takes.
std::size_t recordLength(const MessageHeader& header) noexcept;

/// Appends the records of a chunk, whose bytes must be aligned as `new` gives them. Every length is checked here and
/// trusted later. Throws MalformedRecords.
void readRecords(std::string_view chunk, std::vector<MessageRecord>& records);

/// A fingerprint by which a damaged chunk is known. Not for secrets.
std::uint64_t fingerprint(std::string_view bytes) noexcept;

} // namespace mervo::desk
