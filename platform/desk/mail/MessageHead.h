#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

/// The head of a message: its fields, and the few of them that lists of messages show. A small bounded reader of its
/// own, because a mailbox has a hundred thousand heads and a whole MIME parser is needed for none of them.
namespace mervo::desk {

/// The first `size` bytes hold the whole head when it ends inside them; heads longer than this are cut.
inline constexpr std::size_t kLongestHead = 256 * 1024;

/// Where the head ends: the offset behind the empty line. Nothing when there is no empty line.
std::optional<std::size_t> endOfHead(std::string_view bytes) noexcept;

/// Every field in order: its name as written and its raw value, folding and all, without the line end. A leading
/// mbox "From " line and lines that are no field are passed over.
void forEachField(
    std::string_view head, const std::function<void(std::string_view name, std::string_view value)>& visit);

/// What the index keeps of one head.
struct MessageHead {
    std::string subject; ///< decoded
    std::string sender; ///< "Name <address>" or the address
    std::string messageId; ///< without angle brackets
    std::string to; ///< the raw To field, unfolded
    std::optional<std::int64_t> sent;
    bool isWhole = false; ///< the empty line at its end was seen
    bool isSinglePartText = false; ///< by its Content-Type there is nothing attached
};

MessageHead readMessageHead(std::string_view head);

} // namespace mervo::desk
