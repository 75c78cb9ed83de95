#include "core/automations/engine/AutomationListing.h"

#include "core/automations/engine/RondelEngine.h"
#include "core/automations/model/AutomationFolder.h"

#include <algorithm>
#include <exception>
#include <utility>

namespace mervo {

namespace fs = std::filesystem;

std::vector<Automation> AutomationListing::list() noexcept
try {
    const std::scoped_lock guard(mutex_);
    const fs::path home = RondelEngine::home();
    std::map<fs::path, Known> met;
    std::error_code unreadable;
    for (fs::directory_iterator entry(RondelEngine::automationsDir(), unreadable), end; !unreadable && entry != end;
         entry.increment(unreadable)) {
        auto before = known_.extract(entry->path());
        Known& known = met[entry->path()];
        if (!before.empty())
            known = std::move(before.mapped());
        refresh(entry->path(), home, known);
    }
    known_ = std::move(met);
    std::vector<Automation> found;
    for (const auto& [folder, known] : known_) {
        if (known.automation)
            found.push_back(*known.automation);
    }
    std::ranges::sort(found, {}, &Automation::name);
    return found;
} catch (const std::exception&) {
    return {};
}

AutomationListing::Stamps AutomationListing::stampsOf(
    const fs::path& folder, const fs::path& home, const std::string& name)
{
    const auto state = AutomationFolder::runtimeFile(home, "state", name, ".json");
    return {platform::fileStamp(folder / "loop.json"), platform::fileStamp(folder / "AGENT.md"),
        state ? platform::fileStamp(*state) : std::nullopt};
}

/// The stamps are taken before the files are read: what is written in between is read again.
void AutomationListing::refresh(const fs::path& folder, const fs::path& home, Known& known)
{
    const std::string name = known.automation ? known.automation->name : std::string();
    const Stamps stamps = stampsOf(folder, home, name);
    if (known.isSettled && stamps == known.stamps) {
        known.automation->running = AutomationFolder::isRunning(home, name);
        return;
    }
    known.automation = AutomationFolder::load(folder / "loop.json", home);
    known.stamps = stamps;
    // One that does not load, or whose name was not known when its state was looked at, is read again.
    known.isSettled = known.automation && known.automation->name == name
        && std::ranges::all_of(known.stamps, [](const auto& stamp) { return !stamp || stamp->isSettled(); });
}

} // namespace mervo
