#include "core/doctor/Checks.h"
#include "core/foundation/ConfigDir.h"
#include "core/foundation/Text.h"
#include "core/policy/PendingStore.h"

#include <fmt/format.h>

namespace mervo::Doctor {

Check queue()
{
    const PendingStore::Listing found = PendingStore::listing(ConfigDir::url());
    const std::string folder = (ConfigDir::url() / "pending").string();
    Check check;
    if (found.failure) {
        check.detail = fmt::format("{} cannot be read ({})", folder, found.failure.message());
        check.remedy = fmt::format("Make it a folder of yours: chmod 700 \"{}\"", folder);
        return check;
    }
    check.state = State::works;
    check.detail = found.actions.size() == 1 ? "1 action waits" : fmt::format("{} actions wait", found.actions.size());
    if (found.damaged.empty())
        return check;
    std::vector<std::string> files;
    for (const PendingStore::Damaged& file : found.damaged)
        files.push_back(Text::visibleLine(fmt::format("{} ({})", file.name, file.reason)));
    check.state = State::broken;
    check.detail += fmt::format("; damaged and not shown anywhere: {}", Text::join(files, ", "));
    check.remedy = fmt::format("Look at the named files in {} and delete them.", folder);
    return check;
}

} // namespace mervo::Doctor
