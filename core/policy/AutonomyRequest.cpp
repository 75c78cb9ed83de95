#include "core/policy/AutonomyRequest.h"

#include "core/foundation/ServiceError.h"

#include <algorithm>
#include <fmt/format.h>

namespace mervo {

HarnessConfig::AutonomyChange AutonomyRequest::make(
    AutonomyMode wanted, std::string_view actor, AuditLog& audit, Notices* notices)
{
    using Change = HarnessConfig::AutonomyChange;
    AutonomyMode before = HarnessConfig::load().autonomyMode;
    if (wanted < before) { // looked at again under the lock
        const auto update = HarnessConfig::update([&](HarnessConfig& config) {
            before = config.autonomyMode;
            config.autonomyMode = std::min(before, wanted);
        });
        if (!update.failure.empty())
            throw ServiceError(fmt::format("the autonomy level stays at \"{}\": {}", rawValue(before), update.failure));
        if (notices != nullptr && !update.notice.empty())
            notices->warnings.push_back(update.notice);
        if (wanted < before) {
            audit.log(actor, "set_autonomy", std::nullopt, {{"mode", std::string(rawValue(wanted))}}, "executed",
                "agent_lowered");
        }
    }
    return wanted > before ? Change::refusedHumanOnly : Change::applied;
}

} // namespace mervo
