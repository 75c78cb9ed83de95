#pragma once

#include "core/foundation/Timestamps.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <system_error>

namespace mervo {

/// What `.runtime/state/<name>.json` keeps of an automation: an object with the members `enabled` (boolean), `lastRun`
/// (UTC, "2026-03-01T08:15:42Z") and `lastExit` (integer), and whatever others somebody put there.
///
/// The engine writes the first, the supervisor the other two, each under a lock beside the file and with what the other
/// wrote kept. Neither waits longer than 2 s for the lock; a damaged file is begun anew.
struct RunState {
    bool enabled = true;
    std::optional<Timestamps::Time> lastRun = {};
    std::optional<std::int64_t> lastExit = {};

    bool operator==(const RunState&) const = default;

    /// What cannot be read has its default. Never throws.
    static RunState read(const std::filesystem::path& file) noexcept;

    /// Sets `enabled`, or what is known of the last run. Gives the reason when the file could not be written.
    static std::error_code setEnabled(const std::filesystem::path& file, bool enabled) noexcept;
    static std::error_code setLastRun(
        const std::filesystem::path& file, Timestamps::Time when, std::int64_t exitCode) noexcept;
};

} // namespace mervo
