#include "core/doctor/Doctor.h"

#include "core/doctor/Checks.h"
#include "core/foundation/StoreFailures.h"

#include <array>
#include <exception>
#include <utility>

namespace mervo::Doctor {

namespace {

struct Named {
    const char* id;
    const char* label;
    Finding (*look)();
};

constexpr std::array kChecks{
    Named{"home", "Home directory", home},
    Named{"config", "Settings", settings},
    Named{"database", "Database", database},
    Named{"pending", "Approval queue", queue},
    Named{"acts", "Running acts", acts},
    Named{"scripts", "Script host", scriptHost},
    Named{"guides", "Guides", guides},
    Named{"archive", "Archiving over IMAP", archive},
    Named{"asking", "Questions to you", asking},
    Named{"automations", "Automations", automations},
    Named{"shell", "Scripts of automations", shell},
    Named{"agents", "Connecting an agent", agents},
};

Finding look(const Named& named)
{
    Finding finding;
    try {
        finding = named.look();
    } catch (const std::exception& error) {
        finding.state = State::broken;
        finding.detail = "could not be looked at: " + StoreFailures::inWords(error);
        finding.remedy = "Look at the rights of the home directory and of what lies in it.";
    }
    finding.id = named.id;
    finding.label = named.label;
    return finding;
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

std::vector<Finding> examine()
{
    std::vector<Finding> findings;
    for (const Named& named : kChecks)
        findings.push_back(look(named));
    for (Finding& finding : platform::health())
        findings.push_back(std::move(finding));
    return findings;
}

} // namespace mervo::Doctor
