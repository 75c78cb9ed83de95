#include "core/automations/engine/RondelEngine.h"

#include "core/automations/engine/EngineError.h"
#include "core/automations/engine/Job.h"
#include "core/automations/engine/LiveView.h"
#include "core/automations/engine/Tmux.h"
#include "core/automations/model/AutomationFolder.h"
#include "core/automations/model/AutomationName.h"
#include "core/automations/model/LoopObject.h"
#include "core/automations/model/RunLock.h"
#include "core/automations/model/RunPaths.h"
#include "core/automations/model/RunState.h"
#include "core/foundation/ConfigDir.h"
#include "core/foundation/HarnessConfig.h"
#include "core/foundation/JsonMembers.h"
#include "core/foundation/Text.h"
#include "platform/files.h"

#include <algorithm>
#include <chrono>
#include <fmt/format.h>
#include <nlohmann/json.hpp>
#include <thread>

namespace mervo {

namespace {

namespace fs = std::filesystem;

constexpr const char* kStopped = "143"; ///< exit code of a run that was asked to end
constexpr std::chrono::milliseconds kPause(50), kLongestEnd(5000);

RunPaths pathsOf(std::string_view name)
{
    if (!AutomationName::isValid(name))
        throw EngineError::failed(AutomationName::refusal(name));
    return {RondelEngine::home(), name};
}

bool isThere(const fs::path& file)
{
    std::error_code unreadable;
    return fs::exists(file, unreadable);
}

void throwIf(const std::error_code& error, const fs::path& file)
{
    if (error)
        throw EngineError::failed(fmt::format("\"{}\" could not be written: {}", file.string(), error.message()));
}

void write(const fs::path& file, std::string_view bytes)
{
    throwIf(platform::replaceFile(file, bytes), file);
}

void writeState(const RunPaths& paths, bool enabled)
{
    throwIf(RunState::setEnabled(paths.state(), enabled), paths.state());
}

void writeFiles(const RunPaths& paths, const nlohmann::json& loop, const AutomationDraft& draft)
{
    throwIf(platform::createPrivateFolder(paths.folder()), paths.folder());
    write(paths.loop(), LoopObject::text(loop));
    if (const auto* agent = std::get_if<AutomationDraft::Agent>(&draft.work))
        write(paths.instructions(), agent->prompt);
    writeState(paths, draft.enabled);
}

/// What was not made whole is nothing.
void discard(const RunPaths& paths)
{
    std::error_code ignored;
    for (const fs::path& file : {paths.loop(), paths.instructions(), paths.state(), paths.folder()})
        fs::remove(file, ignored);
}

void waitForEnd(const RunPaths& paths)
{
    const auto end = std::chrono::steady_clock::now() + kLongestEnd;
    while (RunLock::livingHolder(paths.lockHolder()) && std::chrono::steady_clock::now() < end)
        std::this_thread::sleep_for(kPause);
}

} // namespace

RondelEngine::RondelEngine(RunProgram run)
    : run_(std::move(run))
{
}

fs::path RondelEngine::home()
{
    std::error_code gone;
    const fs::path home = ConfigDir::url();
    return home.is_absolute() ? home : fs::absolute(home, gone);
}

void RondelEngine::makeFolders() noexcept
try {
    const fs::path root = home();
    for (const char* folder : {"automations", ".runtime/logs", ".runtime/run", ".runtime/state"})
        platform::createPrivateFolder(root / folder);
    platform::createPrivateFolder(Job::folder());
} catch (const std::exception&) { // as any other failure
}

fs::path RondelEngine::automationsDir()
{
    return home() / "automations";
}

fs::path RondelEngine::folderURL(std::string_view name)
{
    return AutomationName::isValid(name) ? RunPaths(home(), name).folder() : fs::path();
}

fs::path RondelEngine::logURL(std::string_view name)
{
    return AutomationFolder::runtimeFile(home(), "logs", name, ".log").value_or(fs::path());
}

std::vector<Automation> RondelEngine::list() noexcept
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

std::optional<Automation> RondelEngine::find(std::string_view name) noexcept
{
    if (!AutomationName::isValid(name))
        return std::nullopt;
    auto found = AutomationFolder::load(RunPaths(home(), name).loop(), home());
    return found && found->name == name ? std::move(found) : std::nullopt;
}

std::optional<platform::Moment> RondelEngine::loadedSince(std::string_view name) noexcept
try {
    if (!AutomationName::isValid(name))
        return std::nullopt;
    std::error_code missing;
    const auto written = fs::last_write_time(Job(name, home(), {}).file(), missing);
    if (missing)
        return std::nullopt;
    return std::chrono::floor<std::chrono::seconds>(std::chrono::file_clock::to_sys(written));
} catch (const std::exception&) {
    return std::nullopt;
}

/// The paths of an automation that is there.
RunPaths RondelEngine::existing(std::string_view name) const
{
    RunPaths paths = pathsOf(name);
    if (!isThere(paths.loop()))
        throw EngineError::noSuchLoop(std::string(name));
    return paths;
}

void RondelEngine::sync(const RunPaths& paths, std::string_view name) const
{
    const auto automation = AutomationFolder::load(paths.loop(), home());
    if (!automation)
        throw EngineError::noSuchLoop(std::string(name));
    const Job job(name, home(), run_);
    if (RunState::read(paths.state()).enabled) {
        job.install(automation->schedule);
    } else {
        job.uninstall();
    }
}

void RondelEngine::add(const AutomationDraft& draft) const
{
    const RunPaths paths = pathsOf(draft.name);
    makeFolders();
    if (isThere(paths.loop()))
        throw EngineError::alreadyExists(draft.name);
    try {
        writeFiles(paths, LoopObject::make(draft, std::chrono::system_clock::now()), draft);
    } catch (const EngineError&) {
        discard(paths);
        throw;
    }
    sync(paths, draft.name);
}

void RondelEngine::edit(const AutomationDraft& draft) const
{
    const RunPaths paths = existing(draft.name);
    makeFolders();
    auto stored = LoopObject::read(paths.loop());
    if (!stored)
        throw EngineError::failed(fmt::format("\"{}\" is no JSON object", paths.loop().string()));
    writeFiles(paths, LoopObject::edited(*std::move(stored), draft), draft);
    sync(paths, draft.name);
}

void RondelEngine::setEnabled(std::string_view name, bool enabled) const
{
    const RunPaths paths = existing(name);
    makeFolders();
    writeState(paths, enabled);
    sync(paths, name);
}

void RondelEngine::remove(std::string_view name) const
{
    const RunPaths paths = existing(name);
    makeFolders();
    const Job job(name, home(), run_);
    job.unload();
    if (tryStop(paths, name))
        waitForEnd(paths);
    std::error_code error;
    fs::remove_all(paths.folder(), error);
    if (error)
        throw EngineError::failed(
            fmt::format("\"{}\" could not be deleted: {}", paths.folder().string(), error.message()));
    fs::remove(job.file(), error);
    fs::remove(paths.state(), error);
}

void RondelEngine::runNow(std::string_view name) const
{
    existing(name);
    makeFolders();
    const std::string line = fmt::format("nohup {} auto-run {} --force >/dev/null 2>&1 &",
        Text::shellQuoted(mervoBinary().string()), Text::shellQuoted(name));
    try {
        const auto outcome = run_({.program = "/bin/bash", .arguments = {"-c", line}});
        if (outcome.status != 0)
            throw EngineError::failed(fmt::format("'{}' could not be started: {}", name, outcome.error));
    } catch (const platform::NotStarted& failure) {
        throw EngineError::failed(fmt::format("/bin/bash could not be started: {}", failure.what()));
    }
}

/// False when nothing runs.
bool RondelEngine::tryStop(const RunPaths& paths, std::string_view name) const
{
    const Tmux tmux(home(), run_);
    if (tmux.hasSession(name)) {
        tmux.killSession(name);
        platform::replaceFile(paths.done(), kStopped); // without it the supervisor finds the session gone
        return true;
    }
    const auto pid = RunLock::livingHolder(paths.lockHolder());
    if (!pid)
        return false;
    try {
        run_({.program = "/usr/bin/pkill", .arguments = {"-P", std::to_string(*pid)}});
    } catch (const platform::NotStarted&) { // its children end with it, or by themselves
    }
    platform::requestEnd(*pid);
    return true;
}

void RondelEngine::stop(std::string_view name) const
{
    if (!tryStop(existing(name), name))
        throw EngineError::notRunning(std::string(name));
}

void RondelEngine::attach(std::string_view name) const
{
    existing(name);
    const auto chosen = HarnessConfig::load().terminalApp;
    LiveView::open(RunPaths::tmuxSocket(home()), name, chosen && !chosen->empty() ? *chosen : "Terminal", run_);
}

void RondelEngine::syncAll() const
{
    makeFolders();
    std::optional<EngineError> first;
    for (const Automation& automation : list()) {
        try {
            sync(existing(automation.name), automation.name);
        } catch (const EngineError& failure) {
            if (!first)
                first = failure;
        }
    }
    if (first)
        throw *first;
}

void RondelEngine::resyncIfRelocated() const
{
    const auto isOutdated = [&](const Automation& automation) {
        return AutomationName::isValid(automation.name) && Job(automation.name, home(), run_).isOutdated();
    };
    if (std::ranges::any_of(list(), isOutdated))
        syncAll();
}

void RondelEngine::ensureSystemLoop(const std::string& name, const std::string& tool, std::int64_t everyMinutes) const
{
    const RunPaths paths = pathsOf(name);
    makeFolders();
    const std::string command = AutomationDraft::toolCommand(tool, "");
    auto loop = LoopObject::read(paths.loop());
    if (loop && JsonMembers::text(*loop, "command") == command && JsonMembers::flag(*loop, "system") == true
        && JsonMembers::flag(*loop, "notifyOnFail") == true)
        return;
    const bool isNew = !loop;
    if (isNew) {
        loop = LoopObject::make({.name = name,
                                    .work = AutomationDraft::Tool{.tool = tool, .args = ""},
                                    .schedule = Automation::Interval{everyMinutes}},
            std::chrono::system_clock::now());
    }
    loop->update({{"command", command}, {"system", true}, {"notifyOnFail", true}});
    throwIf(platform::createPrivateFolder(paths.folder()), paths.folder());
    write(paths.loop(), LoopObject::text(*loop));
    if (isNew)
        writeState(paths, true);
    try {
        sync(paths, name);
    } catch (const EngineError&) { // its job is made at the next start
    }
}

} // namespace mervo
