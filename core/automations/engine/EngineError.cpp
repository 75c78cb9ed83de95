#include "core/automations/engine/EngineError.h"

namespace mervo {

EngineError EngineError::noSuchLoop(const std::string& name)
{
    return EngineError("no such automation: " + name);
}

EngineError EngineError::alreadyExists(const std::string& name)
{
    return EngineError("automation '" + name + "' already exists (use edit)");
}

EngineError EngineError::notRunning(const std::string& name)
{
    return EngineError("'" + name + "' is not running");
}

EngineError EngineError::failed(const std::string& text)
{
    return EngineError(text);
}

} // namespace mervo
