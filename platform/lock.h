#pragma once

#include "platform/descriptor.h"

#include <chrono>
#include <filesystem>
#include <optional>
#include <string>
#include <system_error>
#include <utility>

namespace mervo::platform {

/// A lock between processes, and between threads, that all ask for it by the name of one file. It is
/// advisory. The system releases it when its process ends, in whatever way; a process that is stopped keeps it.
class FileLock {
public:
    /// Waits until the lock is free, up to `limit`. Nothing when it could not be had: `why` is errc::timed_out, or what
    /// is wrong with the file. The file is created when it is not there (mode 0600), stays, and names the holder.
    static std::optional<FileLock> acquire(
        const std::filesystem::path& file, std::chrono::milliseconds limit, std::error_code& why) noexcept;
    /// The process that took the lock last, by its number as text; empty when the file does not say.
    static std::string lastHolder(const std::filesystem::path& file);

private:
    explicit FileLock(Descriptor descriptor)
        : descriptor_(std::move(descriptor))
    {
    }
    Descriptor descriptor_;
};

} // namespace mervo::platform
