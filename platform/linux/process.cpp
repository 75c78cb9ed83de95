#include "platform/process.h"

#include "platform/linux/Descriptor.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <limits>
#include <poll.h>
#include <spawn.h>
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

/// A descriptor above the standard three, so that placing one in the child never overwrites another.
Descriptor aboveStandard(Descriptor descriptor)
{
    if (descriptor.get() > STDERR_FILENO)
        return descriptor;
    const int moved = fcntl(descriptor.get(), F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    if (moved < 0)
        throw NotStarted(errno, NotStarted::Step::pipe);
    return Descriptor(moved);
}

Pipe makePipe()
{
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC) != 0)
        throw NotStarted(errno, NotStarted::Step::pipe);
    Descriptor read(ends[0]);
    Descriptor write(ends[1]);
    return {aboveStandard(std::move(read)), aboveStandard(std::move(write))};
}

void check(int errorNumber)
{
    if (errorNumber != 0)
        throw NotStarted(errorNumber);
}

class FileActions {
public:
    FileActions() { check(posix_spawn_file_actions_init(&actions_)); }
    FileActions(const FileActions&) = delete;
    ~FileActions() { posix_spawn_file_actions_destroy(&actions_); }

    void place(const Descriptor& from, int to) { check(posix_spawn_file_actions_adddup2(&actions_, from.get(), to)); }
    void openNull(int to, int mode = O_RDONLY)
    {
        check(posix_spawn_file_actions_addopen(&actions_, to, "/dev/null", mode, 0));
    }
    void closeFrom(int first) { check(posix_spawn_file_actions_addclosefrom_np(&actions_, first)); }
    const posix_spawn_file_actions_t* get() const { return &actions_; }

private:
    posix_spawn_file_actions_t actions_{};
};

/// Default signal actions and an empty mask, whatever this process has set for itself.
class Attributes {
public:
    explicit Attributes(int otherFlags = 0)
    {
        check(posix_spawnattr_init(&attributes_));
        sigset_t signals;
        sigfillset(&signals);
        sigdelset(&signals, SIGKILL);
        sigdelset(&signals, SIGSTOP);
        posix_spawnattr_setsigdefault(&attributes_, &signals);
        sigemptyset(&signals);
        posix_spawnattr_setsigmask(&attributes_, &signals);
        const int flags = POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSIGMASK | otherFlags;
        posix_spawnattr_setflags(&attributes_, static_cast<short>(flags));
    }
    Attributes(const Attributes&) = delete;
    ~Attributes() { posix_spawnattr_destroy(&attributes_); }
    const posix_spawnattr_t* get() const { return &attributes_; }

private:
    posix_spawnattr_t attributes_{};
};

/// Keeps the signal of a pipe without a reader away from this thread; the write then fails with EPIPE.
class NoBrokenPipeSignal {
public:
    NoBrokenPipeSignal()
    {
        sigset_t pending;
        sigpending(&pending);
        wasPending_ = sigismember(&pending, SIGPIPE) == 1;
        sigemptyset(&blocked_);
        sigaddset(&blocked_, SIGPIPE);
        pthread_sigmask(SIG_BLOCK, &blocked_, &previous_);
    }
    NoBrokenPipeSignal(const NoBrokenPipeSignal&) = delete;
    ~NoBrokenPipeSignal()
    {
        const timespec now{};
        while (!wasPending_ && sigtimedwait(&blocked_, nullptr, &now) < 0 && errno == EINTR) { }
        pthread_sigmask(SIG_SETMASK, &previous_, nullptr);
    }

private:
    sigset_t blocked_{};
    sigset_t previous_{};
    bool wasPending_ = false;
};

/// A started program. One that is dropped before its end (memory ran out while reading) is ended and reaped.
class Child {
public:
    explicit Child(pid_t id)
        : id_(id)
    {
    }
    Child(const Child&) = delete;
    ~Child()
    {
        if (id_ > 0) {
            kill(id_, SIGKILL);
            wait();
        }
    }

    /// The wait status; nothing when the process has asked not to be told of its children.
    std::optional<int> wait() noexcept
    {
        const pid_t id = std::exchange(id_, -1);
        int status = 0;
        while (waitpid(id, &status, 0) < 0) {
            if (errno != EINTR)
                return std::nullopt;
        }
        return status;
    }

private:
    pid_t id_;
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
    if (count > 0)
        to.append(buffer.data(), static_cast<std::size_t>(count));
    else if (count == 0 || !wouldBlock())
        from.close();
}

/// Writes what the pipe takes; closes when all is written or nobody reads any more.
void feed(Descriptor& to, std::string_view& rest)
{
    const ssize_t count = ::write(to.get(), rest.data(), rest.size());
    if (count >= 0)
        rest.remove_prefix(static_cast<std::size_t>(count));
    else if (!wouldBlock())
        rest = {};
    if (rest.empty())
        to.close();
}

void exchange(Descriptor& input, std::string_view toWrite, Descriptor& output, Descriptor& error, Outcome& outcome)
{
    const NoBrokenPipeSignal guard;
    while (input.open() || output.open() || error.open()) {
        // A negative descriptor is passed over by poll.
        std::array<pollfd, 3> waited{{{input.get(), POLLOUT, 0}, {output.get(), POLLIN, 0}, {error.get(), POLLIN, 0}}};
        if (poll(waited.data(), waited.size(), -1) < 0)
            continue;
        if (waited[0].revents != 0)
            feed(input, toWrite);
        if (waited[1].revents != 0)
            drain(output, outcome.output);
        if (waited[2].revents != 0)
            drain(error, outcome.error);
    }
}

/// The arguments as the system wants them. The texts stay the command's.
std::vector<char*> argumentVector(const Command& command)
{
    const auto add = [](std::vector<char*>& list, const std::string& text) {
        if (text.find('\0') != std::string::npos)
            throw NotStarted(EINVAL);
        list.push_back(const_cast<char*>(text.c_str()));
    };
    std::vector<char*> list;
    list.reserve(command.arguments.size() + 2);
    add(list, command.program);
    for (const std::string& argument : command.arguments)
        add(list, argument);
    list.push_back(nullptr);
    return list;
}

pid_t spawn(const Command& command, const FileActions& actions, int otherFlags = 0)
{
    const std::vector<char*> arguments = argumentVector(command);
    const Attributes attributes(otherFlags);
    pid_t id = -1;
    check(posix_spawn(&id, command.program.c_str(), actions.get(), attributes.get(), arguments.data(), environ));
    return id;
}

void setStatus(Outcome& outcome, int status)
{
    if (WIFEXITED(status))
        outcome.status = WEXITSTATUS(status);
    else if (WIFSIGNALED(status))
        outcome.signal = WTERMSIG(status);
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
    Pipe input;
    Pipe output = makePipe();
    Pipe error;
    FileActions actions;
    if (command.input.empty()) {
        actions.openNull(STDIN_FILENO);
    } else {
        input = makePipe();
        fcntl(input.write.get(), F_SETFL, O_NONBLOCK);
        actions.place(input.read, STDIN_FILENO);
    }
    actions.place(output.write, STDOUT_FILENO);
    if (!command.inheritStandardError) {
        error = makePipe();
        actions.place(error.write, STDERR_FILENO);
    }
    actions.closeFrom(STDERR_FILENO + 1);

    Child child(spawn(command, actions));
    input.read.close();
    output.write.close();
    error.write.close();

    Outcome outcome;
    exchange(input.write, command.input, output.read, error.read, outcome);
    if (const auto status = child.wait())
        setStatus(outcome, *status);
    return outcome;
}

std::optional<Outcome> runDetached(const Command& command, std::chrono::milliseconds patience)
{
    constexpr timespec kPause{0, 10'000'000};
    const Descriptor error = aboveStandard(Descriptor(memfd_create("stderr", MFD_CLOEXEC)));
    FileActions actions;
    actions.openNull(STDIN_FILENO);
    actions.openNull(STDOUT_FILENO, O_WRONLY);
    actions.place(error, STDERR_FILENO);
    actions.closeFrom(STDERR_FILENO + 1);
    const pid_t id = spawn(command, actions, POSIX_SPAWN_SETSID);
    const auto end = std::chrono::steady_clock::now() + patience;
    int status = 0;
    pid_t ended = 0;
    while ((ended = waitpid(id, &status, WNOHANG)) == 0 && std::chrono::steady_clock::now() < end)
        nanosleep(&kPause, nullptr);
    if (ended != id)
        return std::nullopt;
    Outcome outcome;
    setStatus(outcome, status);
    std::array<char, 65536> text;
    const ssize_t length = pread(error.get(), text.data(), text.size(), 0);
    outcome.error.assign(text.data(), static_cast<std::size_t>(std::max<ssize_t>(length, 0)));
    return outcome;
}

bool isRunning(std::int64_t processId) noexcept
{
    return processId > 0 && processId <= std::numeric_limits<pid_t>::max()
        && kill(static_cast<pid_t>(processId), 0) == 0;
}

} // namespace mervo::platform
