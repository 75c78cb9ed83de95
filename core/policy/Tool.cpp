#include "core/policy/Tool.h"

namespace mervo {

ToolError ToolError::missingArg(std::string_view name)
{
    return ToolError("missing required argument: " + std::string(name));
}

ToolError ToolError::badArg(const std::string& text)
{
    return ToolError(text);
}

} // namespace mervo
