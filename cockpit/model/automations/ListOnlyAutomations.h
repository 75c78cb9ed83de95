#pragma once

#include "cockpit/model/automations/AutomationOperations.h"
#include "core/automations/engine/AutomationListing.h"

namespace mervo {

/// The automations of this build, which can only list them: every other operation throws the sentence that says so.
class ListOnlyAutomations final : public AutomationOperations {
public:
    std::vector<Automation> list() override;
    std::filesystem::path logFile(const std::string& name) override;
    void runNow(const std::string& name) override;
    void stop(const std::string& name) override;
    void pause(const std::string& name) override;
    void resume(const std::string& name) override;
    void remove(const std::string& name) override;
    void openLive(const std::string& name) override;

private:
    AutomationListing listing_;
};

} // namespace mervo
