#pragma once

#include "platform/desk/mail/MailboxSnapshot.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// The stored form of some hundred headers: one blob of the index. A mailbox is a row of chunks, so that reading it
/// takes a few large reads, and a changed flag rewrites one chunk. The bytes are those of this machine: the index is a
/// cache and never leaves it.
namespace mervo::desk {

inline constexpr std::size_t kMessagesInChunk = 512;

/// Each header is a fixed part, then the texts without separators.
std::string encodeChunk(const std::vector<MessageHeader>& headers);

/// Appends the headers of a chunk; their texts lie in `bytes`. False when the bytes are no chunk.
[[nodiscard]] bool decodeChunk(std::string_view bytes, std::vector<MessageHeader>& headers);

/// A fingerprint by which a damaged chunk is known. Not for secrets.
std::uint64_t fingerprint(std::string_view bytes) noexcept;

} // namespace mervo::desk
