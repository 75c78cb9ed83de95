#include "platform/linux/Spawn.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace mervo::platform {

namespace {

constexpr int kNotRun = 127;

/// What the new program is, as the system wants it. The texts stay the command's.
class Image {
public:
    explicit Image(const Command& command)
    {
        add(arguments_, command.program);
        for (const std::string& argument : command.arguments)
            add(arguments_, argument);
        arguments_.push_back(nullptr);
        if (!command.environment)
            return;
        for (const std::string& variable : *command.environment)
            add(environment_, variable);
        environment_.push_back(nullptr);
    }

    char* const* arguments() const { return arguments_.data(); }
    char* const* environment() const { return environment_.empty() ? environ : environment_.data(); }

private:
    static void add(std::vector<char*>& list, const std::string& text)
    {
        if (text.find('\0') != std::string::npos)
            throw NotStarted(EINVAL);
        list.push_back(const_cast<char*>(text.c_str()));
    }

    std::vector<char*> arguments_, environment_;
};

/// Keeps every signal away from this thread: a handler must not run in the child, whose memory is ours until it has
/// become the other program.
class NoSignals {
public:
    NoSignals()
    {
        sigset_t all;
        sigfillset(&all);
        pthread_sigmask(SIG_SETMASK, &all, &before_);
    }
    NoSignals(const NoSignals&) = delete;
    NoSignals& operator=(const NoSignals&) = delete;
    ~NoSignals() { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }

private:
    sigset_t before_{};
};

// What follows runs in the child: it calls nothing but the system, and gives false with errno set.

bool place(const Start& start)
{
    for (int to = 0; to < 3; ++to) {
        int from = start.standard[static_cast<std::size_t>(to)];
        if (from == Start::kOurs)
            continue;
        if (from == Start::kNull)
            from = ::open("/dev/null", to == STDIN_FILENO ? O_RDONLY : O_WRONLY);
        if (from < 0 || (from != to && ::dup2(from, to) < 0))
            return false;
    }
    if (::close_range(STDERR_FILENO + 1, ~0U, 0) == 0)
        return true;
    rlimit limit{};
    ::getrlimit(RLIMIT_NOFILE, &limit);
    for (int descriptor = STDERR_FILENO + 1; descriptor < static_cast<int>(limit.rlim_cur); ++descriptor)
        ::close(descriptor);
    return true;
}

void resetSignals()
{
    struct sigaction action = {};
    action.sa_handler = SIG_DFL;
    for (int signal = 1; signal <= SIGRTMAX; ++signal)
        ::sigaction(signal, &action, nullptr);
    sigset_t none;
    sigemptyset(&none);
    ::sigprocmask(SIG_SETMASK, &none, nullptr);
}

/// The request comes first and the look after it: a parent that ends before both is seen to be gone.
bool tieTo(pid_t parent)
{
    return ::prctl(PR_SET_PDEATHSIG, SIGKILL) == 0 && ::getppid() == parent;
}

bool prepare(const Start& start, pid_t parent)
{
    if (start.ownSession && ::setsid() < 0)
        return false;
    if (!place(start))
        return false;
    resetSignals();
    return !start.diesWithUs || tieTo(parent);
}

// The child shares this process's memory, and this thread waits, until it is the other program or has ended.
[[gnu::noinline]] pid_t startChild(
    const Command& command, const Image& image, const Start& start, pid_t parent, volatile int* failure)
{
    const pid_t id = ::vfork();
    if (id != 0)
        return id;
    if (prepare(start, parent) && (command.folder.empty() || ::chdir(command.folder.c_str()) == 0))
        ::execve(command.program.c_str(), image.arguments(), image.environment());
    *failure = errno;
    ::_exit(kNotRun);
}

} // namespace

pid_t spawn(const Command& command, const Start& start)
{
    const Image image(command);
    volatile int failure = 0;
    pid_t id = -1;
    {
        const NoSignals quiet;
        id = startChild(command, image, start, ::getpid(), &failure);
        if (id < 0)
            failure = errno;
    }
    if (failure == 0)
        return id;
    while (id > 0 && ::waitpid(id, nullptr, 0) < 0 && errno == EINTR) { }
    throw NotStarted(failure);
}

} // namespace mervo::platform
