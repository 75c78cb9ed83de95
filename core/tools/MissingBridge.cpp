#include "core/tools/MissingBridge.h"

#include "core/foundation/ServiceError.h"

namespace mervo {

Tool withoutBridge(std::string application, Tool tool)
{
    const std::string sentence = tool.id + " needs the " + application + " bridge, which this build does not have";
    tool.nativeRun = [sentence](const Args&) -> std::string { throw ServiceError(sentence); };
    tool.missingBridge = std::move(application);
    return tool;
}

} // namespace mervo
