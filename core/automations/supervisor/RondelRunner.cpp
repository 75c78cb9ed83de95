#include "core/automations/supervisor/RondelRunner.h"

#include "core/automations/engine/RondelEngine.h"
#include "core/automations/launch/Launch.h"
#include "core/automations/launch/RunEnvironment.h"
#include "core/automations/model/AutomationName.h"
#include "core/automations/model/LoopObject.h"
#include "core/automations/model/RunLock.h"
#include "core/automations/model/RunState.h"
#include "core/automations/supervisor/Workload.h"
#include "core/foundation/Text.h"

#include <cstdio>
#include <fmt/format.h>
#include <nlohmann/json.hpp>

namespace mervo {

namespace {

namespace fs = std::filesystem;

enum Result : std::int32_t { decided = 0, notRun = 1 };

std::int32_t noSuchLoop(const std::string& name)
{
    std::fputs(fmt::format("rondel: no such loop: {}\n", Text::visibleLine(name)).c_str(), stderr);
    return notRun;
}

/// One that a file says nothing of is not paused, and neither is one that has no name in its loop.json.
bool isPaused(const nlohmann::json& loop, const RunPaths& paths)
{
    return LoopObject::automation(loop) && !RunState::read(paths.state()).enabled;
}

/// The lock of a run, which is given back at the end of the scope.
class Held {
public:
    explicit Held(const RunPaths& paths)
        : paths_(paths)
        , attempt_(RunLock::take(paths.lock()))
    {
    }
    Held(const Held&) = delete;
    Held& operator=(const Held&) = delete;
    ~Held()
    {
        if (attempt_.result != RunLock::Attempt::Result::refused)
            RunLock::release(paths_.lock());
    }

    RunLock::Attempt::Result result() const { return attempt_.result; }
    const std::string& formerHolder() const { return attempt_.holder; }

private:
    const RunPaths& paths_;
    RunLock::Attempt attempt_;
};

void takeOver(const Held& lock, const std::string& name, const fs::path& home, const RunPaths& paths, const RunLog& log)
{
    const std::string& pid = lock.formerHolder();
    log.stamped(fmt::format("stale lock (pid {}) - taking over", pid.empty() ? "?" : pid));
    Launch::endLeftovers(home, paths, name, log);
}

std::int32_t work(const RunContext& run)
{
    std::error_code ignored;
    fs::remove(run.paths.done(), ignored); // a signal of the last run
    run.log.rotate(run.paths.olderLog());
    if (run.settings.isScript)
        return runScript(run) ? decided : notRun;
    runAgent(run);
    return decided;
}

std::int32_t runLocked(const std::string& name, const fs::path& home, const RunPaths& paths, const nlohmann::json& loop)
{
    const RunSettings settings = RunSettings::of(loop, paths);
    const std::string searchPath = RunEnvironment::searchPath();
    const RunLog log(paths.log());
    platform::EndRequest request;
    const Held lock(paths);
    if (lock.result() == RunLock::Attempt::Result::refused) {
        log.stamped(fmt::format("skip: previous run still active (pid {})", lock.formerHolder()));
        return decided;
    }
    if (lock.result() == RunLock::Attempt::Result::takenOver)
        takeOver(lock, name, home, paths, log);
    const RecordExit record = [&](int code) {
        (void)RunState::setLastRun(paths.state(), std::chrono::system_clock::now(), code); // never a reason to fail
    };
    return work({name, home, paths, settings, searchPath, log, request, record});
}

} // namespace

std::int32_t RondelRunner::runOnce(const std::string& name, bool force)
{
    RondelEngine::makeFolders();
    if (!AutomationName::isValid(name))
        return noSuchLoop(name);
    const fs::path home = RondelEngine::home();
    const RunPaths paths(home, name);
    const auto loop = LoopObject::read(paths.loop());
    if (!loop)
        return noSuchLoop(name);
    if (!force && isPaused(*loop, paths)) {
        RunLog(paths.log())
            .stamped(fmt::format("skip: '{}' is paused; launchd fired a stale / login-reloaded agent. Resume it in the "
                                 "cockpit to run.",
                name));
        return decided;
    }
    return runLocked(name, home, paths, *loop);
}

} // namespace mervo
