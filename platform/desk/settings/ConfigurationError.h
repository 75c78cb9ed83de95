#pragma once

#include <filesystem>
#include <stdexcept>
#include <string_view>

namespace mervo::desk {

/// A mistake in desk.toml. what() names the file, the line, the key and what is wrong with it.
class ConfigurationError final : public std::runtime_error {
public:
    /// `line` is 0 when the file as a whole is meant.
    ConfigurationError(const std::filesystem::path& file, long line, std::string_view sentence);
};

} // namespace mervo::desk
