#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

/// The lock of an automation: the folder `<name>.lock.d`, made by the supervisor of a run, with the decimal number of
/// its process in the file `pid`. Making the folder is taking the lock. Whoever takes or releases one holds
/// `.runtime/run/.lock` meanwhile, so that the folder is never seen without its number, and of several that find a lock
/// whose supervisor was killed one takes it over.
namespace mervo::RunLock {

/// The number that the file `pid` holds: 32 bits with an optional sign, white space around it. Nothing when it cannot
/// be read or is none.
std::optional<std::int32_t> holder(const std::filesystem::path& pidFile);

/// The same, when a process of this number is there and ours to signal, and may be the one that wrote the file: it is
/// older than the file, or a supervisor by its command line. Else the lock is stale, or not held.
std::optional<std::int32_t> livingHolder(const std::filesystem::path& pidFile);

struct Attempt {
    enum class Result { taken, takenOver, refused };
    Result result = Result::taken;
    std::string holder = {}; ///< what the file `pid` held, on one line; empty when there was nothing to be read
};

/// Takes the lock for this process, also when nothing can be written; refused only for a living holder.
Attempt take(const std::filesystem::path& lock) noexcept;

/// Gives it back, unless another process has it by now.
void release(const std::filesystem::path& lock) noexcept;

/// The automation whose lock this process or one above it holds: whose run this process belongs to.
std::optional<std::string> runAbove(const std::filesystem::path& home);

} // namespace mervo::RunLock
