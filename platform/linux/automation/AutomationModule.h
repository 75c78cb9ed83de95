#pragma once

#include "platform/automation.h"
#include "platform/modules.h"

namespace mervo::platform::automation {

/// What the module of the bundle does that knows the local applications.
class Backend {
public:
    Backend() = default;
    Backend(const Backend&) = delete;
    Backend& operator=(const Backend&) = delete;
    virtual ~Backend() = default;

    /// Both throw std::exception with a sentence.
    virtual Status permission(const std::string& bundleId, AskUser ask) const = 0;
    virtual void terminate(const std::string& bundleId) const = 0;
};

extern "C" const Backend* mervoAutomation();
inline constexpr auto kAutomationModule = MERVO_MODULE("mervo-automation.so", mervoAutomation);

} // namespace mervo::platform::automation
