#include "platform/terminal_input.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <termios.h>
#include <unistd.h>

namespace mervo::platform {
namespace {

constexpr std::array kEndingSignals{SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGTSTP};
volatile std::sig_atomic_t caught = 0;

void remember(int signal)
{
    caught = signal;
}

/// No echo while it lives. A signal that would end (or stop) the program waits until the echo is back.
class WithoutEcho {
public:
    WithoutEcho()
    {
        caught = 0;
        tcgetattr(STDIN_FILENO, &before_);
        struct sigaction action { };
        action.sa_handler = remember;
        for (std::size_t i = 0; i < kEndingSignals.size(); ++i)
            sigaction(kEndingSignals[i], &action, &actions_[i]);
        termios quiet = before_;
        quiet.c_lflag &= ~static_cast<tcflag_t>(ECHO);
        tcsetattr(STDIN_FILENO, TCSAFLUSH, &quiet);
    }
    ~WithoutEcho()
    {
        tcsetattr(STDIN_FILENO, TCSAFLUSH, &before_);
        for (std::size_t i = 0; i < kEndingSignals.size(); ++i)
            sigaction(kEndingSignals[i], &actions_[i], nullptr);
        if (caught != 0)
            raise(caught);
    }
    WithoutEcho(const WithoutEcho&) = delete;
    WithoutEcho& operator=(const WithoutEcho&) = delete;

private:
    termios before_{};
    std::array<struct sigaction, kEndingSignals.size()> actions_{};
};

void say(const std::string& text)
{
    // The prompt is a courtesy: a terminal that does not take it still takes the line.
    if (write(STDERR_FILENO, text.data(), text.size()) < 0)
        errno = 0;
}

} // namespace

bool isTerminalInput()
{
    return isatty(STDIN_FILENO) == 1;
}

Secret readHidden(const std::string& prompt)
{
    say(prompt);
    Secret line;
    {
        const WithoutEcho quiet;
        char c = 0;
        while (caught == 0 && read(STDIN_FILENO, &c, 1) == 1 && c != '\n')
            line.append({&c, 1});
        if (caught != 0)
            line = Secret();
        say("\n");
    }
    return line;
}

} // namespace mervo::platform
