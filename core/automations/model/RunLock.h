#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>

/// Who holds the lock of an automation: the folder `<name>.lock.d`, made by the supervisor of a run, with the decimal
/// number of its process in the file `pid`.
namespace mervo::RunLock {

/// The number that the file `pid` holds: 32 bits with an optional sign, white space around it. Nothing when it cannot
/// be read or is none.
std::optional<std::int32_t> holder(const std::filesystem::path& pidFile);

/// The same, when a process of this number is there and ours to signal; else the lock is stale, or not held.
std::optional<std::int32_t> livingHolder(const std::filesystem::path& pidFile);

} // namespace mervo::RunLock
