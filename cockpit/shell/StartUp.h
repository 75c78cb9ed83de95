#pragma once

#include <functional>
#include <thread>

namespace mervo {

/// The steps of the application's start. A step that fails is reported on standard error and does not stop the next
/// ones.
struct StartUp {
    std::function<void()> bootstrapHome; ///< the home directory is there, and nobody else's
    std::function<void()> reconcileAgents; ///< the scheduled jobs name this program and this home
    std::function<void()> ensureHarvest; ///< answers to questions are fetched every 10 minutes
    std::function<void()> makeUpdater; ///< looks for newer versions

    /// The last one does nothing in this build, since the package manager updates it.
    static StartUp ofThisBuild();

    /// The first step here, before the model reads anything; the others in order on a thread of their own, since they
    /// wait for other programs. The thread must be joined.
    std::jthread run() const;
};

} // namespace mervo
