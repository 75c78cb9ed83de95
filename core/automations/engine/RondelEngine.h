#pragma once

#include "core/automations/engine/Programs.h"
#include "core/automations/model/Automation.h"
#include "core/automations/model/AutomationDraft.h"
#include "platform/schedule/Schedule.h"

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace mervo {

class RunPaths;

/// The one place where automations are made, changed, paused, started, stopped and listed.
///
/// Keeps nothing in memory: the truth are the folders of the automations, their state files, and the property lists of
/// their jobs. Takes no lock; each file is replaced whole. Any thread; the operations wait for `launchctl` and tmux.
/// They throw EngineError: for a name that no automation can have (AutomationName), and where it is said.
class RondelEngine {
public:
    explicit RondelEngine(RunProgram run = platform::run);

    /// The root of the engine's files: the home directory, as an absolute path.
    static std::filesystem::path home();
    static std::filesystem::path automationsDir();
    /// Makes the folders of the home and that of the jobs. Failures show when a file is written there.
    static void makeFolders() noexcept;
    /// The folder of an automation, and the log of its runs; an empty path if no automation can have this name.
    static std::filesystem::path folderURL(std::string_view name);
    static std::filesystem::path logURL(std::string_view name);
    /// The program that jobs run.
    static std::filesystem::path mervoBinaryForLaunchd() { return mervoBinary(); }

    /// Every folder that holds a readable loop.json, sorted by name. Never throws: what cannot be read is left out.
    static std::vector<Automation> list() noexcept;
    /// One of the list; nothing for a name that is not in it.
    static std::optional<Automation> find(std::string_view name) noexcept;
    /// When the job was loaded: the time of its property list. Nothing when it has none, as when it is paused.
    static std::optional<platform::Moment> loadedSince(std::string_view name) noexcept;

    /// Makes an automation and, unless it is paused, its job. Throws alreadyExists. One whose files could not all be
    /// written is removed again.
    void add(const AutomationDraft& draft) const;
    /// Changes one; name and kind stay, which the caller sees to. Throws noSuchLoop.
    void edit(const AutomationDraft& draft) const;
    /// Pauses or resumes. Throws noSuchLoop.
    void setEnabled(std::string_view name, bool enabled) const;
    /// Stops a run, waits up to 5 s for its end, and deletes everything but the logs and `.runtime/run`. Throws
    /// noSuchLoop, and failed when the folder cannot be deleted.
    void remove(std::string_view name) const;
    /// Starts a run, also of one that is paused, and returns at once. Throws noSuchLoop; failed when no run starts.
    void runNow(std::string_view name) const;
    /// Ends the run: its live session, or its supervisor and what that started. Throws noSuchLoop, notRunning.
    void stop(std::string_view name) const;
    /// Opens the live session in the owner's terminal. Throws noSuchLoop, failed.
    void attach(std::string_view name) const;

    /// Makes each automation's job what its files say. The first failure is thrown when all have been looked at.
    void syncAll() const;
    /// The same if a job names another program or log than it would now: the application or the home has moved.
    void resyncIfRelocated() const;
    /// Keeps an automation that the system itself needs: it runs this tool, and its failures are mailed. One that is
    /// there keeps its schedule and whatever else it says.
    void ensureSystemLoop(const std::string& name, const std::string& tool, std::int64_t everyMinutes) const;

private:
    RunPaths existing(std::string_view name) const;
    void sync(const RunPaths& paths, std::string_view name) const;
    bool tryStop(const RunPaths& paths, std::string_view name) const;

    RunProgram run_;
};

} // namespace mervo
