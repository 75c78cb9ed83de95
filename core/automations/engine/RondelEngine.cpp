#include "core/automations/engine/RondelEngine.h"

#include "core/automations/model/AutomationFolder.h"
#include "core/foundation/ConfigDir.h"

#include <algorithm>

namespace mervo::RondelEngine {

namespace fs = std::filesystem;

fs::path home()
{
    return ConfigDir::url();
}

fs::path automationsDir()
{
    return home() / "automations";
}

fs::path logURL(std::string_view name)
{
    return AutomationFolder::runtimeFile(home(), "logs", name, ".log").value_or(fs::path());
}

std::vector<Automation> list() noexcept
{
    std::vector<Automation> found;
    std::error_code unreadable;
    const fs::path root = home();
    for (fs::directory_iterator entry(automationsDir(), unreadable), end; !unreadable && entry != end;
         entry.increment(unreadable)) {
        if (auto automation = AutomationFolder::load(entry->path() / "loop.json", root))
            found.push_back(std::move(*automation));
    }
    std::ranges::sort(found, {}, &Automation::name);
    return found;
}

} // namespace mervo::RondelEngine
