#include "platform/desk/running/ApplicationHealth.h"

#include "platform/ascii.h"
#include "platform/desk/health/Findings.h"
#include "platform/desk/running/ApplicationSettings.h"

#include <fmt/format.h>

namespace mervo::desk {

std::vector<Finding> examineApplicationSettings(const Configuration& configuration)
{
    std::vector<Finding> findings;
    for (const auto& [application, program] : namedPrograms(configuration)) {
        const std::string name(identityOf(application).name);
        findings.push_back(commandFinding(fmt::format("desk.applications.{}", platform::ascii::lowered(name)),
            fmt::format("The program for {}", name), {program}, name.c_str(), {}));
    }
    return findings;
}

} // namespace mervo::desk
