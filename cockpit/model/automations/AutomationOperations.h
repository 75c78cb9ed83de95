#pragma once

#include "core/automations/model/Automation.h"
#include "platform/schedule/Schedule.h"

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace mervo {

/// What the cockpit lists of the automations and does with them. `list`, `folder`, `logFile` and `loadedSince` are
/// quick and never throw. The others wait for other programs, so they do not belong on the main thread; they throw
/// EngineError.
class AutomationOperations {
public:
    AutomationOperations() = default;
    AutomationOperations(const AutomationOperations&) = delete;
    AutomationOperations& operator=(const AutomationOperations&) = delete;
    virtual ~AutomationOperations() = default;

    virtual std::vector<Automation> list() = 0; ///< system ones too; any thread
    virtual std::filesystem::path folder(const std::string& name) = 0; ///< empty if none can have this name
    virtual std::filesystem::path logFile(const std::string& name) = 0;
    /// When its job was loaded; nothing when it has none.
    virtual std::optional<platform::Moment> loadedSince(const std::string& name) = 0;

    virtual void runNow(const std::string& name) = 0;
    virtual void stop(const std::string& name) = 0;
    virtual void pause(const std::string& name) = 0;
    virtual void resume(const std::string& name) = 0;
    virtual void remove(const std::string& name) = 0;
    virtual void openLive(const std::string& name) = 0;
};

} // namespace mervo
