#include "core/automations/model/RunLock.h"

#include "core/automations/model/AutomationName.h"
#include "core/foundation/Text.h"
#include "platform/files.h"
#include "platform/lock.h"
#include "platform/process.h"

#include <algorithm>
#include <charconv>
#include <map>

namespace mervo::RunLock {

namespace {

namespace fs = std::filesystem;
using std::chrono::seconds;

constexpr std::size_t kLongestNumber = 64;
constexpr std::string_view kEnding = ".lock.d";
constexpr seconds kClockGrain(2); // of a file's time, and of a process's
constexpr seconds kPatience(2);
constexpr int kMostAncestors = 200;

std::string textOf(const fs::path& pidFile)
{
    return std::string(Text::trimmed(platform::readFile(pidFile, kLongestNumber).value_or("")));
}

std::optional<std::int32_t> number(std::string_view digits)
{
    if (digits.starts_with('+') && !digits.starts_with("+-"))
        digits.remove_prefix(1);
    std::int32_t pid = 0;
    const auto [end, failure] = std::from_chars(digits.data(), digits.data() + digits.size(), pid);
    const bool isNumber = failure == std::errc() && end == digits.data() + digits.size();
    return isNumber ? std::optional(pid) : std::nullopt;
}

std::string nameOf(const fs::path& lock)
{
    const std::string folder = lock.filename().string();
    return folder.ends_with(kEnding) ? folder.substr(0, folder.size() - kEnding.size()) : std::string();
}

/// A number comes back after a restart, or when all others have been used.
bool mayHaveWritten(std::int32_t pid, const fs::path& pidFile)
{
    const auto facts = platform::processFacts(pid);
    std::error_code unknown;
    const auto written = fs::last_write_time(pidFile, unknown);
    if (!facts || unknown || facts->age + kClockGrain >= fs::file_time_type::clock::now() - written)
        return true;
    const auto has = [&](std::string_view word) { return std::ranges::find(facts->words, word) != facts->words.end(); };
    return has("auto-run") && has(nameOf(pidFile.parent_path())); // the clock was set meanwhile
}

/// While one is taken or given back. Without it, when it cannot be had, as nobody waits for ever.
std::optional<platform::FileLock> guard(const fs::path& lock)
{
    std::error_code unlocked;
    return platform::FileLock::acquire(lock.parent_path() / ".lock", kPatience, unlocked);
}

} // namespace

std::optional<std::int32_t> holder(const fs::path& pidFile)
{
    return number(textOf(pidFile));
}

std::optional<std::int32_t> livingHolder(const fs::path& pidFile)
{
    const auto pid = holder(pidFile);
    return pid && platform::isRunning(*pid) && mayHaveWritten(*pid, pidFile) ? pid : std::nullopt;
}

Attempt take(const fs::path& lock) noexcept
try {
    const auto guarded = guard(lock);
    const fs::path pidFile = lock / "pid";
    Attempt attempt;
    std::error_code failure;
    if (!fs::create_directory(lock, failure)) {
        attempt.holder = Text::visibleLine(textOf(pidFile));
        attempt.result = livingHolder(pidFile) ? Attempt::Result::refused : Attempt::Result::takenOver;
    }
    if (attempt.result != Attempt::Result::refused)
        platform::replaceFile(pidFile, std::to_string(platform::ownProcess()), platform::Keep::whileRunning);
    return attempt;
} catch (const std::exception&) {
    return {}; // memory has run out: the run will not get far
}

void release(const fs::path& lock) noexcept
try {
    const auto guarded = guard(lock);
    if (const auto pid = holder(lock / "pid"); pid && *pid != platform::ownProcess())
        return;
    std::error_code ignored;
    fs::remove(lock / "pid", ignored);
    fs::remove_all(lock, ignored);
} catch (const std::exception&) { // it is stale when this process has ended
}

std::optional<std::string> runAbove(const fs::path& home)
{
    std::map<std::int64_t, std::string> holders;
    std::error_code unreadable;
    for (fs::directory_iterator entry(home / ".runtime/run", unreadable), end; !unreadable && entry != end;
         entry.increment(unreadable)) {
        std::string name = nameOf(entry->path());
        if (const auto pid = AutomationName::isValid(name) ? livingHolder(entry->path() / "pid") : std::nullopt)
            holders.emplace(*pid, std::move(name));
    }
    std::int64_t process = holders.empty() ? 0 : platform::ownProcess();
    for (int count = 0; process > 0 && count < kMostAncestors; ++count) {
        if (const auto found = holders.find(process); found != holders.end())
            return found->second;
        const auto facts = platform::processFacts(process);
        process = facts ? facts->parent : 0;
    }
    return std::nullopt;
}

} // namespace mervo::RunLock
