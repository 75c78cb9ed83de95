#include "platform/desk/settings/ConfigurationError.h"

#include <fmt/format.h>

namespace mervo::desk {

ConfigurationError::ConfigurationError(const std::filesystem::path& file, long line, std::string_view sentence)
    : std::runtime_error(line > 0 ? fmt::format("{}, line {}: {}", file.string(), line, sentence)
                                  : fmt::format("{}: {}", file.string(), sentence))
{
}

} // namespace mervo::desk
