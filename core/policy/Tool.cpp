#include "core/policy/Tool.h"

#include <fmt/format.h>

namespace mervo {

ToolError ToolError::missingArg(std::string_view name)
{
    return ToolError("missing required argument: " + std::string(name));
}

ToolError ToolError::badArg(const std::string& text)
{
    return ToolError(text);
}

ToolError ToolError::tooLong(std::size_t bytes)
{
    return ToolError(
        fmt::format("the arguments hold {} bytes, names and values together, and one call holds at most {} "
                    "({} MiB); shorten them, or send them in parts",
            bytes, kMostArgumentBytes, kMostArgumentBytes / (1024 * 1024)));
}

void checkLength(const Args& args)
{
    std::size_t bytes = 0;
    for (const auto& [name, value] : args)
        bytes += name.size() + value.size();
    if (bytes > kMostArgumentBytes)
        throw ToolError::tooLong(bytes);
}

} // namespace mervo
