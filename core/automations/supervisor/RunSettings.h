#pragma once

#include "core/automations/model/RunPaths.h"

#include <chrono>
#include <cstdint>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>

namespace mervo {

/// What a run wants to know of its automation: the members of loop.json (LoopObject), each with its default where it is
/// absent or has another type.
struct RunSettings {
    std::string prompt; ///< only where there is no AGENT.md
    std::string model = "opus";
    std::string cwd; ///< absolute; the automation's own folder where none is named
    std::chrono::seconds timeout = std::chrono::hours(12);
    std::optional<std::int64_t> screen = {};
    bool visible = true;
    std::optional<std::string> effort = {};
    bool isScript = false;
    std::string client = "claude";
    bool dangerous = false;
    std::string command; ///< of a script
    bool notifyOnFail = false;

    static RunSettings of(const nlohmann::json& loop, const RunPaths& paths);
};

} // namespace mervo
