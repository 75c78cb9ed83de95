#include "cockpit/shell/StartUp.h"

#include "core/foundation/ConfigDir.h"

#include <cstdio>
#include <exception>
#include <fmt/core.h>

namespace mervo {

StartUp StartUp::ofThisBuild()
{
    const auto nothing = [] {};
    return {ConfigDir::ensureExists, nothing, nothing, nothing};
}

void StartUp::run() const
{
    for (const auto* step : {&bootstrapHome, &reconcileAgents, &ensureHarvest, &makeUpdater}) {
        try {
            (*step)();
        } catch (const std::exception& failure) {
            fmt::print(stderr, "mervo-cockpit: {}\n", failure.what());
        }
    }
}

} // namespace mervo
