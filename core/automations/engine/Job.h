#pragma once

#include "core/automations/engine/Programs.h"
#include "core/automations/model/Automation.h"

#include <filesystem>
#include <string>
#include <string_view>

namespace mervo {

/// The job that runs an automation on its schedule: a property list in `~/Library/LaunchAgents` (launchd.plist(5)),
/// which `launchctl` makes known to the job runner. Only an enabled automation has one.
class Job {
public:
    /// Of a valid name, in this home, whose path is absolute.
    Job(std::string_view name, const std::filesystem::path& home, RunProgram run);

    /// `~/Library/LaunchAgents`.
    static std::filesystem::path folder();

    std::filesystem::path file() const;

    /// The property list in XML: Label, ProgramArguments (`mervo auto-run <name>`), RunAtLoad (false), ProcessType
    /// ("Interactive"), StandardOutPath and StandardErrorPath, StartInterval (seconds, 60 at least) or
    /// StartCalendarInterval, and EnvironmentVariables with MERVO_HOME where that is set.
    std::string text(const Automation::Schedule& schedule) const;

    /// Whether the property list names another program or log than it would now; false when there is none.
    bool isOutdated() const;

    /// Writes the property list and loads the job anew. Throws EngineError::failed when it cannot be written; what
    /// `launchctl` makes of it is only logged.
    void install(const Automation::Schedule& schedule) const;
    /// Unloads the job; a run in progress goes on. Failures are passed over.
    void unload() const;
    /// Unloads the job and deletes its property list, likewise.
    void uninstall() const;

private:
    platform::Outcome launchctl(const std::string& verb) const;

    std::string name_;
    std::filesystem::path home_;
    RunProgram run_;
};

} // namespace mervo
