#include "core/policy/AutonomyRequest.h"

#include "core/foundation/ConfigDir.h"
#include "core/foundation/ServiceError.h"

namespace mervo {

HarnessConfig::AutonomyChange AutonomyRequest::make(AutonomyMode wanted, std::string_view actor, AuditLog& audit)
{
    using Change = HarnessConfig::AutonomyChange;
    HarnessConfig config = HarnessConfig::load();
    if (wanted > config.autonomyMode)
        return Change::refusedHumanOnly;
    if (wanted == config.autonomyMode)
        return Change::applied;
    const std::string before(rawValue(config.autonomyMode));
    config.autonomyMode = wanted;
    if (!config.save())
        throw ServiceError("The autonomy level could not be written to \"" + (ConfigDir::url() / "config.json").string()
            + "\"; it stays at \"" + before + "\".");
    audit.log(
        actor, "set_autonomy", std::nullopt, {{"mode", std::string(rawValue(wanted))}}, "executed", "agent_lowered");
    return Change::applied;
}

} // namespace mervo
