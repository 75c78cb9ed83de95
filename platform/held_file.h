#pragma once

#include "platform/descriptor.h"

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace mervo::platform {

/// A file that shows whether the process that made it is still alive: it is locked from before it has its name until
/// that process removes it or ends, in whatever way. Destroying the object unlocks the file, which stays. Belongs to
/// one thread.
class HeldFile {
public:
    /// Makes the file (mode 0600) with these bytes. Throws std::system_error. A process that is killed in here
    /// leaves a file of the same name with ".new" appended.
    static HeldFile make(const std::filesystem::path& file, std::string_view bytes);

    /// A file whose process has ended, held by this one from now on: of several that try, one gets it. Nothing when
    /// it is held, gone, or no regular file.
    static std::optional<HeldFile> takeOver(const std::filesystem::path& file) noexcept;

    /// All of it; nothing when it is longer than `limit` or cannot be read.
    std::optional<std::string> read(std::size_t limit) const;
    /// Adds bytes at its end; false when the system does not take them.
    bool append(std::string_view bytes) const noexcept;
    /// Removes the file; false, and it stays, when the system does not let us.
    bool remove() const noexcept;

private:
    HeldFile(Descriptor descriptor, std::filesystem::path file);

    Descriptor descriptor_;
    std::filesystem::path file_;
};

} // namespace mervo::platform
