#include "platform/desk/consent/TerminalQuestion.h"
#include "tests/support/Files.h"

#include <cstring>
#include <fcntl.h>
#include <functional>
#include <gmock/gmock.h>
#include <poll.h>
#include <pty.h>
#include <pwd.h>
#include <sys/wait.h>
#include <termios.h>
#include <utmpx.h>

namespace mervo::desk {
namespace {

constexpr int kBroken = 10; // the exit status of a child that could not be set up

/// A terminal, and in its session a child that asks; the record of logins names `above` as the process of the login.
class Terminal {
public:
    using Login = std::function<void(utmpx&)>;

    Terminal(const Login& change, const std::function<void()>& before)
    {
        child_ = ::forkpty(&master_, nullptr, nullptr, nullptr);
        if (child_ == 0)
            ask(change, before);
    }
    ~Terminal()
    {
        ::kill(child_, SIGKILL);
        ::waitpid(child_, nullptr, 0);
        ::close(master_);
    }
    Terminal(const Terminal&) = delete;
    Terminal& operator=(const Terminal&) = delete;

    void type(std::string_view text) { ASSERT_EQ(::write(master_, text.data(), text.size()), ssize_t(text.size())); }
    /// Waits until this many questions stand there; false at the end of the child.
    bool waitFor(std::size_t questions)
    {
        while (asked() < questions) {
            char bytes[512];
            const ssize_t count = ::read(master_, bytes, sizeof bytes);
            if (count <= 0)
                return false;
            shown_.append(bytes, static_cast<std::size_t>(count));
        }
        return true;
    }
    /// What the child was answered.
    Answer end()
    {
        while (waitFor(asked() + 1)) { }
        int status = 0;
        ::waitpid(child_, &status, 0);
        return static_cast<Answer>(WIFEXITED(status) ? WEXITSTATUS(status) : kBroken);
    }
    const std::string& shown() const { return shown_; }

private:
    std::size_t asked() const
    {
        std::size_t found = 0;
        for (std::size_t at = 0; (at = shown_.find("refuse\": ", at)) != std::string::npos; ++at)
            ++found;
        return found;
    }

    /// The child: the process above it is the shell that it has made.
    [[noreturn]] static void ask(const Login& change, const std::function<void()>& before)
    {
        const test::TempDir dir;
        utmpx login{};
        login.ut_type = USER_PROCESS;
        login.ut_pid = ::getppid();
        std::strncpy(login.ut_line, ::ttyname(0) + std::strlen("/dev/"), sizeof login.ut_line);
        std::strncpy(login.ut_user, ::getpwuid(::getuid())->pw_name, sizeof login.ut_user);
        change(login);
        utmpx other{};
        other.ut_type = BOOT_TIME;
        test::writeFile(dir / "utmp",
            std::string(reinterpret_cast<const char*>(&other), sizeof other)
                + std::string(reinterpret_cast<const char*>(&login), sizeof login));
        before();
        const Answer answer = askAtTerminal("May it?", dir / "utmp");
        std::error_code ignored;
        std::filesystem::remove_all(dir.path(), ignored);
        ::_exit(static_cast<int>(answer));
    }

    int master_ = -1;
    pid_t child_ = -1;
    std::string shown_;
};

const Terminal::Login kSound = [](utmpx&) {};
void nothing() { }

TEST(TerminalQuestion, takesAWholeWordAndNothingElse)
{
    const std::tuple<std::vector<std::string>, Answer> cases[] = {
        {{"allow\n"}, Answer::allow},
        {{"refuse\n"}, Answer::refuse},
        {{"y\n", "\n", "allow\n"}, Answer::allow},
        {{"yes\n", "ALLOW\n", " allow\n"}, Answer::nobody},
        {{"\x04"}, Answer::nobody},
    };
    for (const auto& [lines, expected] : cases) {
        Terminal terminal(kSound, nothing);
        for (std::size_t i = 0; i < lines.size(); ++i) {
            ASSERT_TRUE(terminal.waitFor(i + 1)) << terminal.shown();
            terminal.type(lines[i]);
        }
        EXPECT_EQ(terminal.end(), expected) << lines.front();
        EXPECT_THAT(terminal.shown(), testing::StartsWith("May it?\r\n"));
    }
}

TEST(TerminalQuestion, dropsWhatWasTypedBefore)
{
    Terminal terminal(kSound, [] { ::usleep(300'000); });
    terminal.type("allow\n");
    ASSERT_TRUE(terminal.waitFor(1));
    terminal.type("refuse\n");
    EXPECT_EQ(terminal.end(), Answer::refuse);
}

TEST(TerminalQuestion, isNotPutWhereAProgramCouldAnswer)
{
    const auto pipe = [](int descriptor) {
        int ends[2];
        if (::pipe(ends) != 0 || ::write(ends[1], "allow\n", 6) != 6)
            ::_exit(kBroken);
        ::dup2(ends[descriptor == 0 ? 0 : 1], descriptor);
    };
    const std::tuple<const char*, Terminal::Login, std::function<void()>> cases[] = {
        {"nobody logged in here", [](utmpx& login) { login.ut_type = DEAD_PROCESS; }, nothing},
        {"somebody else did", [](utmpx& login) { login.ut_user[0] ^= 1; }, nothing},
        {"at another terminal", [](utmpx& login) { login.ut_line[4] = 'x'; }, nothing},
        {"a login that is no more", [](utmpx& login) { login.ut_pid = ::getpid(); }, nothing},
        {"input from a pipe", kSound, [&] { pipe(0); }},
        {"output into a pipe", kSound, [&] { pipe(2); }},
        {"in the background", kSound,
            [] {
                ::signal(SIGTTOU, SIG_IGN);
                const pid_t other = ::fork();
                if (other == 0) {
                    ::setpgid(0, 0);
                    ::pause();
                }
                ::setpgid(other, other);
                ::tcsetpgrp(0, other);
            }},
        {"in a session of its own", kSound,
            [] {
                int status = 0;
                if (const pid_t other = ::fork(); other != 0) {
                    ::waitpid(other, &status, 0);
                    ::_exit(WEXITSTATUS(status));
                }
                ::setsid();
            }},
    };
    for (const auto& [name, login, before] : cases) {
        Terminal terminal(login, before);
        EXPECT_EQ(terminal.end(), Answer::nobody) << name;
        EXPECT_EQ(terminal.shown(), "") << name;
    }
}

} // namespace
} // namespace mervo::desk
