#include "core/doctor/Checks.h"
#include "core/foundation/ConfigDir.h"
#include "core/foundation/Text.h"
#include "core/policy/PendingStore.h"

#include <fmt/format.h>

namespace mervo::Doctor {

Finding queue()
{
    const PendingStore::Listing found = PendingStore::listing(ConfigDir::url());
    const std::string folder = (ConfigDir::url() / "pending").string();
    Finding finding;
    if (found.failure) {
        finding.detail = fmt::format("{} cannot be read ({})", folder, found.failure.message());
        finding.remedy = fmt::format("Make it a folder of yours: chmod 700 \"{}\"", folder);
        return finding;
    }
    finding.state = State::works;
    finding.detail =
        found.actions.size() == 1 ? "1 action waits" : fmt::format("{} actions wait", found.actions.size());
    if (found.damaged.empty())
        return finding;
    std::vector<std::string> files;
    for (const PendingStore::Damaged& file : found.damaged)
        files.push_back(Text::visibleLine(fmt::format("{} ({})", file.name, file.reason)));
    finding.state = State::broken;
    finding.detail += fmt::format("; damaged and not shown anywhere: {}", Text::join(files, ", "));
    finding.remedy = fmt::format("Look at the named files in {} and delete them.", folder);
    return finding;
}

} // namespace mervo::Doctor
