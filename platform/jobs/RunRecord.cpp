#include "platform/jobs/RunRecord.h"

#include "platform/files.h"

#include <array>
#include <cerrno>
#include <cinttypes>
#include <csignal>
#include <cstdio>
#include <fcntl.h>
#include <string_view>
#include <sys/file.h>
#include <sys/wait.h>
#include <system_error>
#include <unistd.h>

namespace mervo::jobs {

namespace {

constexpr std::size_t kLineLength = 96;
constexpr std::size_t kBootIdLength = 36;

std::string bootId()
{
    return platform::readFile("/proc/sys/kernel/random/boot_id", kLineLength).value_or("").substr(0, kBootIdLength);
}

/// When a process was started, in ticks since the boot (proc(5), field 22); 0 when it is not there or has ended.
std::uint64_t startOf(pid_t process)
{
    const auto stat = platform::readFile("/proc/" + std::to_string(process) + "/stat", 4096);
    const std::size_t name = stat ? stat->rfind(')') : std::string::npos; // the name may hold anything
    char state = 0;
    std::uint64_t start = 0;
    constexpr const char* kFields =
        " %c %*s %*s %*s %*s %*s %*s %*s %*s %*s %*s %*s %*s %*s %*s %*s %*s %*s %*s %" SCNu64;
    if (name == std::string::npos || std::sscanf(stat->c_str() + name + 1, kFields, &state, &start) != 2)
        return 0;
    return state == 'Z' || state == 'X' ? 0 : start;
}

std::optional<LastRun> parse(const std::string& line)
{
    int number = 0;
    std::uint64_t start = 0;
    std::array<char, kBootIdLength + 1> boot{};
    if (std::sscanf(line.c_str(), "running %d %" SCNu64 " %36s", &number, &start, boot.data()) == 3) {
        if (number <= 0 || start == 0 || startOf(number) != start || bootId() != boot.data())
            return std::nullopt;
        return LastRun{LastRun::State::running, number};
    }
    if (std::sscanf(line.c_str(), "exited %d", &number) == 1)
        return LastRun{LastRun::State::exited, number};
    if (std::sscanf(line.c_str(), "signal %d", &number) == 1)
        return LastRun{LastRun::State::signalled, number};
    return std::nullopt;
}

void replace(int descriptor, std::string_view text) noexcept
{
    std::array<char, kLineLength> line{};
    line.fill(' ');
    text.copy(line.data(), line.size() - 1);
    line.back() = '\n';
    (void)!::pwrite(descriptor, line.data(), line.size(), 0);
}

} // namespace

RunRecord RunRecord::open(const std::filesystem::path& file)
{
    platform::Descriptor descriptor(::open(file.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600));
    int locked = -1;
    while (descriptor.open() && (locked = ::flock(descriptor.get(), LOCK_EX)) != 0 && errno == EINTR) { }
    if (locked != 0)
        throw std::system_error(errno, std::generic_category());
    if (::lseek(descriptor.get(), 0, SEEK_END) == 0)
        replace(descriptor.get(), ""); // its place on the disk, before that is full
    return RunRecord(std::move(descriptor));
}

std::optional<pid_t> RunRecord::running() const
{
    std::array<char, kLineLength> bytes{};
    const ssize_t count = ::pread(descriptor_.get(), bytes.data(), bytes.size(), 0);
    const auto last = parse(std::string(bytes.data(), count > 0 ? static_cast<std::size_t>(count) : 0));
    if (!last || last->state != LastRun::State::running)
        return std::nullopt;
    return last->number;
}

void RunRecord::writeRunning() const noexcept
{
    try {
        const pid_t own = ::getpid();
        const std::string start = std::to_string(startOf(own));
        replace(descriptor_.get(), "running " + std::to_string(own) + ' ' + start + ' ' + bootId());
    } catch (const std::exception&) {
        return; // as a full disk
    }
}

void RunRecord::writeEnd(int code, int status) const noexcept
{
    std::array<char, kLineLength> line{};
    std::snprintf(line.data(), line.size(), "%s %d", code == CLD_EXITED ? "exited" : "signal", status);
    replace(descriptor_.get(), line.data());
}

std::optional<LastRun> lastRun(const std::filesystem::path& file)
{
    const auto line = platform::readFile(file, kLineLength);
    return line ? parse(*line) : std::nullopt;
}

} // namespace mervo::jobs
