#pragma once

#include "platform/descriptor.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace mervo::desk {

/// A file below the desk's cache folder: a front that is read and checked as a whole, and a rest of which single pieces
/// are read. It may be deleted at any time. One that is damaged, too long, or written by another program (another
/// version, which may read the same files otherwise) counts as none. Nothing here throws for the sake of the cache.
///
/// The file: "mervo-cache 1\n", the stamp of the program that wrote it, the checksum of the front, the front as a text,
/// the rest (CacheText.h).
class CacheFile {
public:
    static constexpr std::size_t kLongest = 256 * 1024 * 1024; ///< bytes; a longer one is not written

    /// For what lies below `root`, in the folder `kind` of the cache. Programs have their own.
    CacheFile(std::string_view kind, const std::filesystem::path& root);

    /// Reads the file as it is now. Its front, which stays valid until the next `open`; empty when there is none.
    std::string_view open() noexcept;
    /// A piece of the rest of the file that was opened, also when it was replaced since. Nothing where it is shorter;
    /// its contents are not checked.
    std::optional<std::string> piece(std::uint64_t offset, std::size_t length) const noexcept;

    /// Replaces the file in one step. A full disk changes nothing.
    void write(std::string_view front, std::string_view rest = {}) const noexcept;

private:
    std::filesystem::path file_;
    platform::Descriptor opened_;
    std::string bytes_; // down to the end of the front
    std::uint64_t length_ = 0; // of the whole file
};

} // namespace mervo::desk
