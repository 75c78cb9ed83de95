#include "cockpit/shell/StartUp.h"

#include "core/automations/engine/RondelEngine.h"
#include "core/foundation/ConfigDir.h"
#include "core/foundation/FailureOf.h"
#include "platform/jobs.h"

#include <cstdio>
#include <fmt/core.h>

namespace mervo {

namespace {

constexpr std::int64_t kHarvestMinutes = 10;

void attempt(const std::function<void()>& step)
{
    if (const auto failure = failureOf(step))
        fmt::print(stderr, "mervo-cockpit: {}\n", *failure);
}

} // namespace

StartUp StartUp::ofThisBuild()
{
    return {.bootstrapHome = ConfigDir::ensureExists,
        .reconcileAgents =
            [] {
                platform::resumeJobs();
                RondelEngine().resyncIfRelocated();
            },
        .ensureHarvest = [] { RondelEngine().ensureSystemLoop("ask-harvest", "ask.harvest", kHarvestMinutes); },
        .makeUpdater = [] {}};
}

std::jthread StartUp::run() const
{
    attempt(bootstrapHome);
    return std::jthread([*this] {
        for (const auto* step : {&reconcileAgents, &ensureHarvest, &makeUpdater})
            attempt(*step);
    });
}

} // namespace mervo
