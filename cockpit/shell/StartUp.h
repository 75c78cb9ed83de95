#pragma once

#include <functional>

namespace mervo {

/// What the application sets in order when it starts, before the model reads anything.
struct StartUp {
    std::function<void()> bootstrapHome; ///< the home directory is there, and nobody else's
    std::function<void()> reconcileAgents; ///< the scheduled jobs are those of the automations' folders
    std::function<void()> ensureHarvest; ///< answers to questions are fetched every 10 minutes
    std::function<void()> makeUpdater; ///< looks for newer versions

    /// What this build does: its engine only lists automations and so keeps no jobs that could be out of order, and it
    /// is updated by the package manager; the last three do nothing.
    static StartUp ofThisBuild();

    /// Each in its order. A step that fails is told on standard error, and the next one follows: the cockpit shows what
    /// it can.
    void run() const;
};

} // namespace mervo
