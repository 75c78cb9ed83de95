#include "core/doctor/Doctor.h"

#include "core/doctor/Checks.h"
#include "core/foundation/StoreFailures.h"
#include "platform/health.h"

#include <array>
#include <exception>
#include <utility>

namespace mervo::Doctor {

namespace {

struct Named {
    const char* id;
    const char* label;
    Check (*look)();
};

constexpr std::array kChecks{
    Named{"home", "Home directory", home},
    Named{"config", "Settings", settings},
    Named{"database", "Database", database},
    Named{"pending", "Approval queue", queue},
    Named{"acts", "Running acts", acts},
    Named{"scripts", "Script host", scriptHost},
    Named{"guides", "Guides", guides},
    Named{"tools", "Tools", tools},
    Named{"archive", "Archiving over IMAP", archive},
    Named{"agents", "Connecting an agent", agents},
};

Check look(const Named& named)
{
    Check check;
    try {
        check = named.look();
    } catch (const std::exception& error) {
        check.state = State::broken;
        check.detail = "could not be looked at: " + StoreFailures::inWords(error);
        check.remedy = "Look at the rights of the home directory and of what lies in it.";
    }
    check.id = named.id;
    check.label = named.label;
    return check;
}

Check fromPlatform(const platform::Finding& finding)
{
    return {finding.id, finding.label, finding.ok ? State::works : State::broken, finding.detail, finding.remedy};
}

} // namespace

std::string_view rawValue(State state)
{
    switch (state) {
    case State::works:
        return "works";
    case State::limited:
        return "limited";
    case State::broken:
        return "broken";
    }
    return {};
}

std::vector<Check> examine()
{
    std::vector<Check> checks;
    for (const Named& named : kChecks)
        checks.push_back(look(named));
    for (const platform::Finding& finding : platform::health())
        checks.push_back(fromPlatform(finding));
    return checks;
}

} // namespace mervo::Doctor
