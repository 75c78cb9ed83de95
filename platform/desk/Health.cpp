#include "platform/desk/Health.h"

#include "platform/desk/applications/Desk.h"
#include "platform/desk/health/Findings.h"
#include "platform/desk/settings/Places.h"

#include <fmt/format.h>
#include <iterator>
#include <utility>

namespace mervo::desk {
namespace {

constexpr const char* kId = "desk.configuration";
constexpr const char* kLabel = "Desk configuration";

Finding configurationFinding(const Configuration& configuration)
{
    return makeFinding(kId, kLabel,
        configuration.file().empty()
            ? fmt::format("none: the local account is used ({} is not there)", configurationFile().string())
            : configuration.file().string());
}

void append(std::vector<Finding>& findings, std::vector<Finding> more)
{
    std::move(more.begin(), more.end(), std::back_inserter(findings));
}

} // namespace

std::vector<Finding> examineDesk()
{
    std::vector<Finding> findings;
    try {
        const Configuration configuration = Configuration::load(deskSections());
        findings.push_back(configurationFinding(configuration));
        for (const DeskPart& part : deskParts()) {
            if (part.health != nullptr && part.health->ofSettings != nullptr)
                append(findings, part.health->ofSettings(configuration));
        }
    } catch (const ConfigurationError& error) {
        findings.push_back(
            makeFinding(kId, kLabel, error.what(), "Correct the file; until then every tool that needs it fails."));
    }
    for (const DeskPart& part : deskParts()) {
        if (part.health != nullptr && part.health->ofData != nullptr)
            append(findings, part.health->ofData());
    }
    return findings;
}

} // namespace mervo::desk
