#include "platform/linux/automation/AutomationModule.h"

#include "platform/desk/applications/Desk.h"
#include "platform/desk/consent/Consent.h"
#include "platform/desk/running/RunningApplications.h"

#include <stdexcept>

namespace mervo::desk {
namespace {

namespace automation = platform::automation;

automation::Status statusOf(const Consent::Standing& standing)
{
    if (!standing.trouble.empty())
        throw std::runtime_error(standing.trouble);
    switch (standing.decision) {
    case Decision::undecided:
        return automation::kWouldAsk;
    case Decision::allowed:
        return automation::kAllowed;
    case Decision::refused:
    case Decision::restricted:
    case Decision::writeOnly:
        return automation::kRefused;
    }
    return automation::kFailed;
}

class DeskAutomation final : public automation::Backend {
public:
    /// desk.toml is read afresh each time: a mistake in it is thrown.
    automation::Status permission(const std::string& bundleId, automation::AskUser ask) const override
    {
        const auto application = applicationWithBundleId(bundleId);
        if (!application || !running().isRunning(*application))
            return automation::kNotRunning;
        const Consent consent = Consent::ofDesk(deskSections());
        return statusOf(ask == automation::AskUser::yes ? consent.settle(bundleId) : consent.standing(bundleId));
    }

    void terminate(const std::string& bundleId) const override
    {
        if (const auto application = applicationWithBundleId(bundleId))
            running().terminate(*application);
    }

private:
    static RunningApplications running() { return RunningApplications(Configuration::load(deskSections())); }
};

} // namespace
} // namespace mervo::desk

namespace mervo::platform::automation {

const Backend* mervoAutomation()
{
    static const desk::DeskAutomation automation;
    return &automation;
}

} // namespace mervo::platform::automation
