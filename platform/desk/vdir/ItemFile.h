#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

namespace mervo::desk {

/// What a folder of items could not do; what() is one sentence for the owner.
class VdirError final : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Which bytes a file holds, as far as the system tells without reading it. A renamed file keeps it.
struct ItemStamp {
    std::uint64_t inode = 0;
    std::int64_t bytes = 0;
    std::int64_t modified = 0; ///< nanoseconds since 1970

    bool operator==(const ItemStamp&) const = default;
    /// True when a later writing would have left another time: it lies more than 3 s back, beyond the resolution of
    /// file systems.
    bool isSettled() const;
};
/// Nothing when there is no such file. A link itself, not what it leads to.
std::optional<ItemStamp> itemStamp(const std::filesystem::path& file);

/// The bytes of an item and their stamp.
struct ItemBytes {
    std::string bytes;
    ItemStamp stamp;
};
/// The longest item that is read, in bytes.
constexpr std::size_t kLongestItem = 16 * 1024 * 1024;
/// Nothing for a file that is no regular one, too long, unreadable, or written while it is read, with the reason in
/// `why`. Never waits.
std::optional<ItemBytes> readItem(const std::filesystem::path& file, std::string& why);

/// Distinguishes contents; not for adversaries.
std::uint64_t itemFingerprint(std::string_view bytes);

} // namespace mervo::desk
