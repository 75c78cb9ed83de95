#pragma once

#include <functional>

namespace mervo {

/// The steps of the application's start, before the model reads anything.
struct StartUp {
    std::function<void()> bootstrapHome; ///< the home directory is there, and nobody else's
    std::function<void()> reconcileAgents; ///< the scheduled jobs are those of the automations' folders
    std::function<void()> ensureHarvest; ///< answers to questions are fetched every 10 minutes
    std::function<void()> makeUpdater; ///< looks for newer versions

    /// The last three do nothing in this build: it only lists automations, so it has no jobs to reconcile, and the
    /// package manager updates it.
    static StartUp ofThisBuild();

    /// Runs the steps in order. A step that fails is reported on standard error and does not stop the next ones.
    void run() const;
};

} // namespace mervo
