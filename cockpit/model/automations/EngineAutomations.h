#pragma once

#include "cockpit/model/automations/AutomationOperations.h"
#include "core/automations/engine/AutomationListing.h"
#include "core/automations/engine/RondelEngine.h"

namespace mervo {

/// The automations of the home directory, operated by the engine.
class EngineAutomations final : public AutomationOperations {
public:
    std::vector<Automation> list() override { return listing_.list(); }
    std::filesystem::path folder(const std::string& name) override { return RondelEngine::folderURL(name); }
    std::filesystem::path logFile(const std::string& name) override { return RondelEngine::logURL(name); }
    std::optional<platform::Moment> loadedSince(const std::string& name) override
    {
        return RondelEngine::loadedSince(name);
    }
    void runNow(const std::string& name) override { engine_.runNow(name); }
    void stop(const std::string& name) override { engine_.stop(name); }
    void pause(const std::string& name) override { engine_.setEnabled(name, false); }
    void resume(const std::string& name) override { engine_.setEnabled(name, true); }
    void remove(const std::string& name) override { engine_.remove(name); }
    void openLive(const std::string& name) override { engine_.attach(name); }

private:
    RondelEngine engine_;
    AutomationListing listing_;
};

} // namespace mervo
