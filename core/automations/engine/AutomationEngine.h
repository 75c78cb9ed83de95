#pragma once

#include "core/automations/engine/AutomationListing.h"
#include "core/foundation/ServiceError.h"

#include <filesystem>
#include <string>
#include <vector>

namespace mervo {

/// What an operation on an automation fails with; what() is the sentence for the owner.
class EngineError final : public ServiceError {
public:
    static EngineError noSuchLoop(const std::string& name);
    static EngineError alreadyExists(const std::string& name);
    static EngineError notRunning(const std::string& name);
    static EngineError failed(const std::string& text);

private:
    using ServiceError::ServiceError;
};

/// What the cockpit asks of the engine. The operations wait for other programs, so they do not belong on the main
/// thread; they throw EngineError.
class AutomationEngine {
public:
    AutomationEngine() = default;
    AutomationEngine(const AutomationEngine&) = delete;
    AutomationEngine& operator=(const AutomationEngine&) = delete;
    virtual ~AutomationEngine() = default;

    virtual std::vector<Automation> list() = 0; ///< system ones too; any thread, never throws
    virtual std::filesystem::path logFile(const std::string& name) = 0;

    virtual void runNow(const std::string& name) = 0;
    virtual void stop(const std::string& name) = 0;
    virtual void setEnabled(const std::string& name, bool enabled) = 0;
    virtual void remove(const std::string& name) = 0;
    virtual void openLive(const std::string& name) = 0;
};

/// The engine of this build: it lists, and says of every other operation that it cannot do it.
class ListingEngine final : public AutomationEngine {
public:
    std::vector<Automation> list() override;
    std::filesystem::path logFile(const std::string& name) override;
    void runNow(const std::string& name) override;
    void stop(const std::string& name) override;
    void setEnabled(const std::string& name, bool enabled) override;
    void remove(const std::string& name) override;
    void openLive(const std::string& name) override;

private:
    AutomationListing listing_;
};

} // namespace mervo
