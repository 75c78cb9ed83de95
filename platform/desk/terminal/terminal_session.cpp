#include "platform/desk/terminal/SessionFiles.h"
#include "platform/desk/terminal/WindowShell.h"
#include "platform/folders.h"

#include <array>
#include <cerrno>
#include <charconv>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

using namespace mervo;

namespace {

using Clock = std::chrono::steady_clock;

enum Exit { failed = 1, usage = 2, notRun = 127, signalled = 128 };

constexpr std::chrono::milliseconds kMercy{2000}; // from the hang-up to the kill
constexpr std::chrono::milliseconds kPause{20};

/// What this process waits for, one after the other.
sigset_t awaited()
{
    sigset_t set;
    sigemptyset(&set);
    for (const int signal : {SIGHUP, SIGTERM, SIGCHLD})
        sigaddset(&set, signal);
    return set;
}

std::uint32_t windowId()
{
    const char* text = std::getenv("WINDOWID");
    std::uint32_t number = 0;
    if (text != nullptr)
        std::from_chars(text, text + std::strlen(text), number);
    return number;
}

/// The child: a process group of its own in the foreground of the terminal, and then the shell. It is hung up with its
/// parent also while it is not in the foreground, where the system would not do so.
[[noreturn]] void become(const std::vector<std::string>& command, pid_t parent)
{
    ::prctl(PR_SET_PDEATHSIG, SIGHUP);
    if (::getppid() != parent) // it was killed before the line above
        ::_exit(signalled + SIGHUP);
    ::setpgid(0, 0);
    ::tcsetpgrp(STDIN_FILENO, ::getpid()); // SIGTTOU is ignored still
    for (const int signal : {SIGINT, SIGQUIT, SIGTSTP, SIGTTIN, SIGTTOU})
        std::signal(signal, SIG_DFL);
    const sigset_t set = awaited();
    ::sigprocmask(SIG_UNBLOCK, &set, nullptr);
    std::vector<char*> words;
    for (const std::string& word : command)
        words.push_back(const_cast<char*>(word.c_str()));
    words.push_back(nullptr);
    ::execv(words.front(), words.data());
    std::fprintf(stderr, "%s: %s\n", words.front(), std::strerror(errno));
    ::_exit(notRun);
}

/// The shell of the window, and what is left to do when it or the window ends.
class Shell {
public:
    explicit Shell(const std::vector<std::string>& command)
    {
        const pid_t parent = ::getpid();
        id_ = ::fork();
        if (id_ == 0)
            become(command, parent);
        if (id_ > 0)
            ::setpgid(id_, id_); // whoever of the two is first
    }

    bool isStarted() const { return id_ > 0; }

    /// Waits for its end, or for a request to hang up. The exit status.
    int wait()
    {
        const sigset_t set = awaited();
        for (;;) {
            const int signal = ::sigwaitinfo(&set, nullptr);
            if (signal == SIGHUP || signal == SIGTERM) {
                hangUp();
                return signalled + signal;
            }
            if (signal == SIGCHLD && hasEnded())
                return WIFSIGNALED(status_) ? signalled + WTERMSIG(status_) : WEXITSTATUS(status_);
        }
    }

private:
    /// Nobody else could wake a shell that is stopped.
    bool hasEnded()
    {
        pid_t told = 0;
        while ((told = ::waitpid(id_, &status_, WNOHANG | WUNTRACED)) == id_ && WIFSTOPPED(status_))
            ::kill(-id_, SIGCONT);
        return told == id_;
    }

    /// The groups of the shell and of what it runs in the foreground. What runs behind it is the shell's to tell, and
    /// what does not heed a hang-up there (nohup) goes on as after any log-out.
    void hangUp()
    {
        const pid_t foreground = ::tcgetpgrp(STDIN_FILENO);
        std::array<pid_t, 2> groups{id_, foreground > 0 && foreground != ::getpgrp() ? foreground : id_};
        for (const pid_t group : groups) {
            ::kill(-group, SIGHUP);
            ::kill(-group, SIGCONT);
        }
        const auto end = Clock::now() + kMercy;
        for (const pid_t group : groups) {
            while (::waitpid(-1, nullptr, WNOHANG), ::kill(-group, 0) == 0 && Clock::now() < end)
                std::this_thread::sleep_for(kPause);
        }
        for (const pid_t group : groups)
            ::kill(-group, SIGKILL);
        ::waitpid(id_, nullptr, 0); // whoever waits for this process finds the shell gone as well
    }

    pid_t id_ = -1;
    int status_ = 0;
};

int givenUp()
{
    std::fputs("terminal-session: nobody waits for this window any more\n", stderr);
    return failed;
}

int run(const std::filesystem::path& file)
{
    const auto request = desk::readRequest(file);
    if (!request)
        return givenUp();
    const char* tty = ::ttyname(STDIN_FILENO);
    const auto held = desk::holdSession(file,
        {.id = {},
            .application = request->application,
            .process = ::getpid(),
            .tty = tty == nullptr ? "" : tty,
            .window = windowId()});
    if (!desk::takeRequest(file)) { // whoever waits takes its end for the session's beginning
        held.remove();
        return givenUp();
    }
    if (::chdir(platform::userHome().c_str()) != 0)
        std::perror("terminal-session: the home folder");
    Shell shell(desk::shellCommand(desk::ownerShell(), request->text));
    const int status = shell.isStarted() ? shell.wait() : failed;
    held.remove();
    return status;
}

} // namespace

/// terminal-session REQUEST: what a new window of the owner's terminal runs. Takes the request, registers the session,
/// runs the shell in the foreground and ends with it. SIGHUP and SIGTERM hang up what runs in the window.
int main(int argc, char** argv)
{
    if (argc != 2) {
        std::fputs("usage: terminal-session REQUEST\n", stderr);
        return usage;
    }
    for (const int signal : {SIGINT, SIGQUIT, SIGTSTP, SIGTTIN, SIGTTOU})
        std::signal(signal, SIG_IGN);
    for (const int signal : {SIGHUP, SIGTERM, SIGCHLD})
        std::signal(signal, SIG_DFL); // whatever the terminal was started with
    const sigset_t set = awaited();
    ::sigprocmask(SIG_BLOCK, &set, nullptr);
    try {
        return run(argv[1]);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "terminal-session: %s\n", error.what());
        return failed;
    }
}
