#include "platform/desk/running/ApplicationSettings.h"

#include <set>

namespace mervo::desk {
namespace {

std::map<DeskApplication, std::string> readPrograms(const Table& applications)
{
    std::set<std::string_view> known;
    for (const ApplicationIdentity& identity : applicationIdentities()) {
        if (!alwaysRuns(identity.application))
            known.insert(identity.name);
    }
    applications.refuseUnknownKeys(known, "of \"applications\"");
    std::map<DeskApplication, std::string> programs;
    for (const ApplicationIdentity& identity : applicationIdentities()) {
        if (applications.contains(identity.name))
            programs[identity.application] = applications.text(identity.name);
    }
    return programs;
}

} // namespace

void checkApplicationSection(const Table& applications)
{
    readPrograms(applications);
}

std::map<DeskApplication, std::string> namedPrograms(const Configuration& configuration)
{
    const auto applications = configuration.section(kApplicationSection);
    return applications ? readPrograms(*applications) : std::map<DeskApplication, std::string>();
}

} // namespace mervo::desk
