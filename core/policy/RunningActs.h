#pragma once

#include "core/policy/AuditLog.h"
#include "core/policy/Tool.h"
#include "platform/held_file.h"

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// What runs now and may change the world: one file for each act, `<home>/.runtime/acts/<uuid>.json`, held for as long
/// as the process lives. So even a process that is killed in the middle leaves a row: the next process writes it.
namespace mervo {

/// One act, from before its tool starts until its row is written. Reads leave no file.
class RunningAct {
public:
    /// `why`: the verdict's reason, or "approved". Never throws: an act whose file cannot be written goes on without
    /// one, and that is reported to the log and to StoreFailures::Scope.
    RunningAct(const std::filesystem::path& home, const Tool& tool, const Args& args, std::string_view actor,
        std::string_view why) noexcept;
    RunningAct(const RunningAct&) = delete;
    RunningAct& operator=(const RunningAct&) = delete;
    /// Its row is about to be written: whoever finds the file from here on looks for the row first.
    void ending() noexcept;
    /// The row is written.
    ~RunningAct();

private:
    std::optional<platform::HeldFile> file_;
};

namespace RunningActs {

/// Writes the rows of acts whose process has ended, under the act's own actor, tool and arguments: "error", "mervo was
/// ended while this ran; it may have acted". One row for each, also when several processes look at once; a row that
/// cannot be written is left for the next call. Never throws; without acts it costs one look at a folder.
void recordEnded(const std::filesystem::path& home, AuditLog& audit) noexcept;

/// Whether there is anything for `recordEnded` to look at.
bool any(const std::filesystem::path& home) noexcept;

/// The files that hold no whole act and that no process holds. Nothing removes them.
std::vector<std::filesystem::path> damaged(const std::filesystem::path& home);

} // namespace RunningActs

} // namespace mervo
