#pragma once

#include "core/foundation/HarnessConfig.h"
#include "core/policy/AuditLog.h"
#include "core/policy/Notices.h"

#include <string_view>

/// An agent's request to change the slider. Raising it is for a person alone: a request for a higher level changes
/// nothing. One for the current level is applied and writes nothing; a lower one is written and audited. The level is
/// compared and written under the home's lock: a lower level set in the meantime is not undone. Throws
/// ServiceError when the configuration cannot be written; the level then stays, and there is no row. `notices` receives
/// what a person should know about the file.
namespace mervo::AutonomyRequest {

[[nodiscard]] HarnessConfig::AutonomyChange make(
    AutonomyMode wanted, std::string_view actor, AuditLog& audit = AuditLog::shared(), Notices* notices = nullptr);

} // namespace mervo::AutonomyRequest
