#include "core/doctor/Checks.h"
#include "core/foundation/ConfigDir.h"
#include "core/foundation/Text.h"
#include "core/policy/RunningActs.h"

#include <fmt/format.h>

namespace mervo::Doctor {

Finding acts()
{
    Finding finding;
    finding.state = State::works;
    finding.detail = RunningActs::any(ConfigDir::url()) ? "some run, or wait for their row" : "none";
    std::vector<std::string> names;
    for (const auto& file : RunningActs::damaged(ConfigDir::url()))
        names.push_back(Text::visibleLine(file.string()));
    if (!names.empty()) {
        finding.state = State::broken;
        finding.detail = fmt::format("damaged, so that an act has no row in the trail: {}", Text::join(names, ", "));
        finding.remedy = "Look at the named files and delete them.";
    }
    return finding;
}

} // namespace mervo::Doctor
