#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace mervo {

/// Where the files of one automation are, below the home directory. Paths only; nothing is created.
///
/// The name must be valid (AutomationName::isValid): no other one stays inside its folder. Throws
/// std::invalid_argument for any other.
class RunPaths {
public:
    RunPaths(const std::filesystem::path& home, std::string_view name);

    std::filesystem::path folder() const { return home_ / "automations" / name_; }
    std::filesystem::path loop() const { return folder() / "loop.json"; }
    std::filesystem::path instructions() const { return folder() / "AGENT.md"; }

    std::filesystem::path lock() const { return run(".lock.d"); } ///< a folder: making it is taking the lock
    std::filesystem::path lockHolder() const { return lock() / "pid"; } ///< the supervisor's number, decimal
    std::filesystem::path done() const { return run(".done"); } ///< the run's exit code as text: the run is over
    std::filesystem::path prompt() const { return run(".prompt"); }
    std::filesystem::path wrapper() const { return run(".run.sh"); }
    std::filesystem::path window() const { return run(".window"); } ///< the id of a visible run's terminal session
    /// The number of the session (setsid) that a run without a terminal leads.
    std::filesystem::path session() const { return run(".session"); }
    std::filesystem::path failureTail() const { return run(".failtail.txt"); } ///< body of the failure mail

    std::filesystem::path log() const { return log(".log"); }
    std::filesystem::path olderLog() const { return log(".log.1"); }
    std::filesystem::path jobLog() const { return log(".launchd.log"); } ///< what the job itself writes

    std::filesystem::path state() const { return home_ / ".runtime/state" / (name_ + ".json"); }

    /// The one tmux server of all live sessions.
    static std::filesystem::path tmuxSocket(const std::filesystem::path& home);

private:
    std::filesystem::path run(const char* ending) const { return home_ / ".runtime/run" / (name_ + ending); }
    std::filesystem::path log(const char* ending) const { return home_ / ".runtime/logs" / (name_ + ending); }

    std::filesystem::path home_;
    std::string name_;
};

} // namespace mervo
