#pragma once

#include "platform/descriptor.h"

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

/// Regular files that are too long to be read or written whole. What is no regular file is refused, without waiting.
namespace mervo::platform {

/// To be read from its start; closed when it cannot be opened.
Descriptor openToRead(const std::filesystem::path& file) noexcept;

/// Whatever is written goes to its end. Made when it is missing (mode 0600); closed when it cannot be opened.
Descriptor openToAppend(const std::filesystem::path& file) noexcept;

/// Adds bytes at the end of a file; false when not all of them could be written.
bool appendToFile(const std::filesystem::path& file, std::string_view bytes) noexcept;

/// The last `limit` bytes, or all there are; nothing when the file cannot be read.
std::optional<std::string> readEnd(const std::filesystem::path& file, std::size_t limit);

} // namespace mervo::platform
