#pragma once

#include "core/foundation/ServiceError.h"

#include <string>

namespace mervo {

/// An operation on an automation failed; what() is the sentence for the owner.
class EngineError final : public ServiceError {
public:
    static EngineError noSuchLoop(const std::string& name);
    static EngineError alreadyExists(const std::string& name);
    static EngineError notRunning(const std::string& name);
    static EngineError failed(const std::string& text);

private:
    using ServiceError::ServiceError;
};

} // namespace mervo
