#include "platform/process.h"

#include "platform/linux/Child.h"
#include "platform/linux/Spawn.h"
#include "platform/stop.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <limits>
#include <poll.h>
#include <string_view>
#include <sys/mman.h>
#include <sys/wait.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace mervo::platform {

namespace {

struct Pipe {
    Descriptor read;
    Descriptor write;
};

Pipe makePipe()
{
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC) != 0)
        throw NotStarted(errno, NotStarted::Step::pipe);
    Descriptor read(ends[0]);
    Descriptor write(ends[1]);
    return {aboveStandard(std::move(read)), aboveStandard(std::move(write))};
}

/// A text as a file in memory that nobody can change any more, to be read from its start. Other than through a pipe, a
/// program reads all of it even when this process is killed meanwhile: half a message must not pass for a whole one.
Descriptor sealed(std::string_view text)
{
    Descriptor memory = aboveStandard(Descriptor(memfd_create("input", MFD_CLOEXEC | MFD_ALLOW_SEALING)));
    while (!text.empty()) {
        const ssize_t count = ::write(memory.get(), text.data(), text.size());
        if (count < 0 && errno != EINTR)
            throw NotStarted(errno, NotStarted::Step::pipe);
        text.remove_prefix(static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
    }
    if (lseek(memory.get(), 0, SEEK_SET) != 0
        || fcntl(memory.get(), F_ADD_SEALS, F_SEAL_SEAL | F_SEAL_SHRINK | F_SEAL_GROW | F_SEAL_WRITE) != 0)
        throw NotStarted(errno, NotStarted::Step::pipe);
    return memory;
}

/// Ends a child in two steps once this process is asked to stop: a request, and a moment later force.
class Ending {
public:
    explicit Ending(const Child& child)
        : child_(child)
    {
    }

    /// For poll: what tells of the request until it has come, and how long to wait from then on.
    pollfd request() const { return {asked_ ? -1 : Stop::descriptor(), POLLIN, 0}; }
    int patience() const
    {
        if (!asked_)
            return -1;
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(forceAt_ - Clock::now());
        return static_cast<int>(std::max<std::int64_t>(left.count(), 0));
    }
    bool asked() const { return asked_; }

    /// After each poll. True when the child has been killed, and nothing of it is worth waiting for any more.
    bool advance()
    {
        if (!asked_ && Stop::reason() != nullptr) {
            child_.signal(SIGTERM);
            forceAt_ = Clock::now() + kPatience;
            asked_ = true;
        }
        if (Clock::now() < forceAt_)
            return false;
        child_.signal(SIGKILL);
        return true;
    }

private:
    using Clock = std::chrono::steady_clock;
    static constexpr std::chrono::milliseconds kPatience{200};

    const Child& child_;
    bool asked_ = false;
    Clock::time_point forceAt_ = Clock::time_point::max();
};

bool wouldBlock()
{
    return errno == EAGAIN || errno == EINTR;
}

/// Reads what is there; closes at the end of the stream.
void drain(Descriptor& from, std::string& to)
{
    std::array<char, 65536> buffer;
    const ssize_t count = ::read(from.get(), buffer.data(), buffer.size());
    if (count > 0) {
        to.append(buffer.data(), static_cast<std::size_t>(count));
    } else if (count == 0 || !wouldBlock()) {
        from.close();
    }
}

void drainAll(Descriptor& output, Descriptor& error, Outcome& outcome, Ending& ending)
{
    while ((output.open() || error.open()) && !ending.advance()) {
        // A negative descriptor is passed over by poll.
        std::array<pollfd, 3> waited{{{output.get(), POLLIN, 0}, {error.get(), POLLIN, 0}, ending.request()}};
        if (poll(waited.data(), waited.size(), ending.patience()) < 0)
            continue;
        if (waited[0].revents != 0)
            drain(output, outcome.output);
        if (waited[1].revents != 0)
            drain(error, outcome.error);
    }
}

/// A program may close its streams and go on. Where its end cannot be polled for, the wait for it is not broken off.
void awaitEnd(const Child& child, Ending& ending)
{
    while (child.end().open() && !ending.advance()) {
        std::array<pollfd, 2> waited{{{child.end().get(), POLLIN, 0}, ending.request()}};
        if (poll(waited.data(), waited.size(), ending.patience()) > 0 && waited[0].revents != 0)
            return;
    }
}

bool send(std::int64_t processId, int signal) noexcept
{
    return processId > 0 && processId <= std::numeric_limits<pid_t>::max()
        && kill(static_cast<pid_t>(processId), signal) == 0;
}

} // namespace

NotStarted::NotStarted(int errorNumber, Step step)
    : std::runtime_error(std::generic_category().message(errorNumber))
    , errorNumber_(errorNumber)
    , step_(step)
{
}

Outcome run(const Command& command)
{
    Outcome outcome;
    if (Stop::reason() != nullptr) {
        outcome.stopped = true;
        return outcome;
    }
    Descriptor input;
    Pipe output = makePipe();
    Pipe error;
    Start start{.standard = {Start::kNull, output.write.get(), Start::kOurs},
        .ownSession = command.ownSession,
        .diesWithUs = true};
    if (!command.input.empty()) {
        input = sealed(command.input);
        start.standard[STDIN_FILENO] = input.get();
    }
    if (!command.inheritStandardError) {
        error = makePipe();
        start.standard[STDERR_FILENO] = error.write.get();
    }

    Child child(spawn(command, start), command.ownSession);
    input.close();
    output.write.close();
    error.write.close();

    Ending ending(child);
    drainAll(output.read, error.read, outcome, ending);
    awaitEnd(child, ending);
    outcome.stopped = ending.asked();
    if (outcome.stopped)
        child.signal(SIGKILL); // what is left of its group
    if (const auto status = child.wait())
        setStatus(outcome, *status);
    return outcome;
}

DetachedProgram::DetachedProgram(const Command& command)
    : error_(aboveStandard(Descriptor(memfd_create("stderr", MFD_CLOEXEC))))
    , id_(spawn(command, {.standard = {Start::kNull, Start::kNull, error_.get()}, .ownSession = true}))
{
}

std::optional<Outcome> DetachedProgram::end()
{
    int status = 0;
    if (id_ <= 0 || waitpid(static_cast<pid_t>(id_), &status, WNOHANG) != id_)
        return std::nullopt;
    id_ = 0;
    Outcome outcome;
    setStatus(outcome, status);
    std::array<char, 65536> text;
    const ssize_t length = pread(error_.get(), text.data(), text.size(), 0);
    outcome.error.assign(text.data(), static_cast<std::size_t>(std::max<ssize_t>(length, 0)));
    return outcome;
}

void DetachedProgram::kill() noexcept
{
    if (id_ <= 0)
        return;
    ::kill(static_cast<pid_t>(-id_), SIGKILL);
    waitpid(static_cast<pid_t>(std::exchange(id_, 0)), nullptr, 0);
}

std::optional<Outcome> runDetached(const Command& command, std::chrono::milliseconds patience)
{
    constexpr timespec kPause{0, 10'000'000};
    DetachedProgram program(command);
    const auto limit = std::chrono::steady_clock::now() + patience;
    std::optional<Outcome> outcome;
    while (!(outcome = program.end()) && std::chrono::steady_clock::now() < limit)
        nanosleep(&kPause, nullptr);
    return outcome;
}

std::string signalName(int signal)
{
    const char* name = sigdescr_np(signal);
    return name == nullptr ? "unknown" : name;
}

bool isRunning(std::int64_t processId) noexcept
{
    return send(processId, 0);
}

bool requestEnd(std::int64_t processId) noexcept
{
    return send(processId, SIGTERM);
}

std::uint32_t userNumber() noexcept
{
    return getuid();
}

} // namespace mervo::platform
