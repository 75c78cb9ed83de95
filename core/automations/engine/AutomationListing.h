#pragma once

#include "core/automations/model/Automation.h"
#include "platform/files.h"

#include <array>
#include <filesystem>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace mervo {

/// RondelEngine::list for repeated use: a file is read again only if its stamp says that it may have changed. Any
/// thread.
class AutomationListing {
public:
    /// Sorted by name; what cannot be read is left out. Never throws.
    std::vector<Automation> list() noexcept;

private:
    using Stamps = std::array<std::optional<platform::FileStamp>, 3>; ///< loop.json, AGENT.md, state

    struct Known {
        Stamps stamps;
        bool isSettled = false; ///< the stamps told so when the files were read
        std::optional<Automation> automation;
    };
    static Stamps stampsOf(
        const std::filesystem::path& folder, const std::filesystem::path& home, const std::string& name);
    static void refresh(const std::filesystem::path& folder, const std::filesystem::path& home, Known& known);

    std::mutex mutex_;
    std::map<std::filesystem::path, Known> known_; ///< by folder
};

} // namespace mervo
