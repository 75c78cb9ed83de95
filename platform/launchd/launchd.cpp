#include "platform/descriptor.h"
#include "platform/files.h"
#include "platform/jobs/Environment.h"
#include "platform/jobs/JobPlaces.h"
#include "platform/jobs/OwnJobs.h"
#include "platform/launchd/Runner.h"
#include "platform/lock.h"
#include "platform/unified_log.h"

#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <functional>
#include <string_view>
#include <sys/signalfd.h>
#include <system_error>
#include <unistd.h>

using namespace mervo;
using namespace mervo::jobs;

namespace {

constexpr const char* kCategory = "jobs";
constexpr const char* kUsage =
    "usage: launchd [--login] [--foreground]\n"
    "\n"
    "Starts the jobs that launchctl has loaded, at their times. There is one for each user; a\n"
    "second one leaves at once, and the last job takes it along.\n"
    "\n"
    "  --login       load every property list of ~/Library/LaunchAgents first, and take over\n"
    "                from a runner that lives\n"
    "  --foreground  stay, and log to standard error too\n";
constexpr std::chrono::milliseconds kPatience{5000}, kLook{50};

struct Options {
    bool login = false, foreground = false, help = false;
};

bool read(int argc, char** argv, Options& options)
{
    for (int index = 1; index < argc; ++index) {
        const std::string_view word = argv[index];
        bool* flag = word == "--login" ? &options.login
            : word == "--foreground"   ? &options.foreground
            : word == "--help"         ? &options.help
                                       : nullptr;
        if (flag == nullptr)
            return false;
        *flag = true;
    }
    return true;
}

/// The lock that makes this process the runner of its user; nothing while another one is. One that lives is asked to
/// end when `takesOver`, or when its program has been replaced since: it leaves at once, and its runs go on. Whoever
/// holds the lock without being a runner is about to be one or to be gone, or a full disk kept its number from being
/// written. Throws std::runtime_error when one that was asked to end does not.
std::optional<platform::FileLock> becomeRunner(bool takesOver)
{
    const auto deadline = std::chrono::steady_clock::now() + kPatience;
    pid_t asked = 0;
    for (;;) {
        std::error_code why;
        if (auto lock = platform::FileLock::acquire(lockFile(), kLook, why))
            return lock;
        if (why != std::errc::timed_out)
            throw std::system_error(why, lockFile().string());
        const own::Runner runner = own::runner();
        if (runner.process > 0 && !takesOver && !runner.isOutdated)
            return std::nullopt;
        if (runner.process > 0 && runner.process != asked)
            ::kill(asked = runner.process, SIGTERM);
        if (std::chrono::steady_clock::now() < deadline)
            continue;
        if (asked == 0)
            return std::nullopt;
        throw std::runtime_error("process " + std::to_string(asked) + " was asked to leave the jobs and does not end.");
    }
}

platform::Descriptor askedToEnd()
{
    sigset_t signals;
    sigemptyset(&signals);
    for (const int signal : {SIGTERM, SIGINT, SIGHUP})
        sigaddset(&signals, signal);
    ::sigprocmask(SIG_BLOCK, &signals, nullptr);
    return platform::Descriptor(::signalfd(-1, &signals, SFD_CLOEXEC));
}

/// Returns when it was asked to end, or when no job is left. A job that is loaded while the lock is given up finds it
/// free, or is found here.
void runJobs(bool login, const Runner::Log& log, const std::function<void()>& isReady)
{
    own::makeFolders();
    const platform::Descriptor ends = askedToEnd();
    for (bool isFirst = true; isFirst || !own::loaded().empty(); isFirst = false) {
        const auto lock = becomeRunner(login && isFirst);
        if (!lock)
            return;
        if (login && isFirst)
            own::reload(log.error);
        Runner runner(log);
        isReady();
        if (!runner.run(ends.get()))
            return;
    }
}

/// What this process was started with may lack the standard descriptors, whose numbers would go to other files, and
/// have signals ignored.
void tidyUp()
{
    int opened = -1;
    while ((opened = ::open("/dev/null", O_RDWR)) >= 0 && opened <= STDERR_FILENO) { }
    ::close(opened);
    ::signal(SIGCHLD, SIG_DFL); // ends of runs are to be told
    ::signal(SIGPIPE, SIG_IGN); // whoever waited to hear of the start may be gone
}

/// Leaves the terminal and the caller's descriptors. `true` in the process that goes on; its parent returns when that
/// one is ready or has ended, and gives whether it is well.
bool becomeDaemon(platform::Descriptor& ready, bool& isWell)
{
    std::array<int, 2> ends{};
    if (::pipe2(ends.data(), O_CLOEXEC) != 0)
        throw std::system_error(errno, std::generic_category(), "pipe");
    platform::Descriptor told(ends[0]);
    ready = platform::Descriptor(ends[1]);
    const pid_t process = ::fork();
    if (process < 0)
        throw std::system_error(errno, std::generic_category(), "fork");
    if (process > 0) {
        ready.close();
        char byte = 0;
        ssize_t count = 0;
        while ((count = ::read(told.get(), &byte, 1)) < 0 && errno == EINTR) { }
        isWell = count == 1;
        return false;
    }
    ::setsid();
    (void)!::chdir("/");
    const platform::Descriptor null(::open("/dev/null", O_RDWR | O_CLOEXEC));
    for (const int standard : {STDIN_FILENO, STDOUT_FILENO})
        ::dup2(null.get(), standard);
    return true;
}

int serve(const Options& options)
{
    platform::Descriptor ready;
    bool isWell = true;
    if (!options.foreground && !becomeDaemon(ready, isWell))
        return isWell ? EXIT_SUCCESS : EXIT_FAILURE;
    keepSessionVariables();
    const auto tell = [&](const std::string& line) {
        if (options.foreground)
            std::fprintf(stderr, "launchd: %s\n", line.c_str());
    };
    Runner::Log log{[&](const std::string& line) { platform::logInfo(kCategory, line), tell(line); },
        [&](const std::string& line) { platform::logError(kCategory, line), tell(line); }};
    const auto isReady = [&ready] {
        if (!ready.open())
            return;
        ::dup2(STDOUT_FILENO, STDERR_FILENO); // where the caller heard of what went wrong
        (void)!::write(ready.get(), "", 1);
        ready.close();
    };
    runJobs(options.login, log, isReady);
    isReady(); // also where somebody else is the runner
    return EXIT_SUCCESS;
}

} // namespace

/// launchd: starts jobs at their times where no systemd does.
int main(int argc, char** argv)
{
    tidyUp();
    Options options;
    if (!read(argc, argv, options)) {
        std::fputs(kUsage, stderr);
        return 2;
    }
    if (options.help) {
        std::fputs(kUsage, stdout);
        return EXIT_SUCCESS;
    }
    try {
        return serve(options);
    } catch (const std::exception& error) {
        platform::logError(kCategory, std::string("the runner ends: ") + error.what());
        std::fprintf(stderr, "launchd: %s\n", error.what());
        return EXIT_FAILURE;
    }
}
