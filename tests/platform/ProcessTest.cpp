#include "platform/process.h"

#include "platform/stop.h"
#include "platform/tls.h"
#include "tests/support/Files.h"

#include <atomic>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace mervo::platform {
namespace {

Outcome shell(const std::string& script, std::string input = {})
{
    return run({"/bin/sh", {"-c", script}, std::move(input), false});
}

/// Does the deed in a process of its own; its number.
template <typename Deed>
pid_t inAnotherProcess(Deed deed)
{
    const pid_t id = ::fork();
    if (id == 0) {
        deed();
        ::_exit(0);
    }
    return id;
}

/// Waits until a file holds a line, at most 20 s.
std::string lineOf(const std::filesystem::path& file)
{
    std::string line;
    for (int look = 0; look < 4000 && line.empty(); ++look, ::usleep(5000))
        std::getline(std::ifstream(file) >> std::ws, line);
    return line;
}

/// Gone, or ended and not yet reaped by whoever has inherited it.
bool hasEnded(pid_t id)
{
    std::string word;
    std::ifstream status("/proc/" + std::to_string(id) + "/status");
    while (status >> word && word != "State:") { }
    return !(status >> word) || word == "Z" || word == "X";
}

bool endsSoon(pid_t id)
{
    for (int look = 0; look < 1000 && !hasEnded(id); ++look)
        ::usleep(5000);
    return hasEnded(id);
}

/// Our child's own end, with the status 0 and within 20 s.
bool succeedsSoon(pid_t child)
{
    const auto began = std::chrono::steady_clock::now();
    int status = -1;
    ::waitpid(child, &status, 0);
    return status == 0 && std::chrono::steady_clock::now() - began < std::chrono::seconds(20);
}

std::size_t openDescriptors()
{
    std::size_t count = 0;
    for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd"))
        count += entry.path().empty() ? 0 : 1;
    return count;
}

constexpr unsigned long long kStandardSignals = 0x7FFFFFFF; // 1 to 31; the C library keeps two more to itself

TEST(Process, tellsHowAProgramEnded)
{
    EXPECT_EQ(shell("exit 3").status, 3);
    const Outcome killed = shell("kill -TERM $$");
    EXPECT_EQ(killed.status, -1);
    EXPECT_EQ(killed.signal, SIGTERM);
    const Outcome spoke = shell("printf out; printf err >&2");
    EXPECT_EQ(spoke.output, "out");
    EXPECT_EQ(spoke.error, "err");
}

TEST(Process, argumentsArriveAsTheyStand)
{
    const std::vector<std::string> hostile{"'; rm -rf x; '", "$(id)", "two\nlines", "back\\slash", "", "\xFF\xFE", "-"};
    Command command{"/usr/bin/printf", {"%s\\0"}, {}, false};
    command.arguments.insert(command.arguments.end(), hostile.begin(), hostile.end());
    std::string expected;
    for (const auto& argument : hostile)
        expected += argument + '\0';
    EXPECT_EQ(run(command).output, expected);
}

TEST(Process, bothStreamsAreDrainedHoweverMuchIsWritten)
{
    constexpr std::size_t kMuch = 8 * 1024 * 1024;
    const Outcome outcome =
        shell("head -c 8388608 /dev/zero >&2; head -c 8388608 /dev/zero; head -c 8388608 /dev/zero >&2");
    EXPECT_EQ(outcome.output.size(), kMuch);
    EXPECT_EQ(outcome.error.size(), 2 * kMuch);
}

TEST(Process, inputIsWrittenWhileOutputIsRead)
{
    const std::string much(4 * 1024 * 1024 + 1, 'x');
    EXPECT_EQ(run({"/bin/cat", {}, much, false}).output, much);
    EXPECT_EQ(shell("cat | wc -c").output, "0\n") << "without input there is an end at once";
}

TEST(Process, aProgramThatStopsReadingIsNoError)
{
    // The pipe's signal would end this test program if it arrived.
    EXPECT_EQ(shell("exec <&-; exit 5", std::string(1024 * 1024, 'x')).status, 5);
    sigset_t pending;
    sigpending(&pending);
    EXPECT_EQ(sigismember(&pending, SIGPIPE), 0);
}

TEST(Process, whatCannotStartSaysWhy)
{
    const test::TempDir dir;
    test::writeFile(dir / "no-program", "not executable");
    struct Case {
        std::string program;
        int errorNumber;
        std::string text;
    };
    const Case cases[]{
        {(dir / "missing").string(), ENOENT, "No such file or directory"},
        {(dir / "no-program").string(), EACCES, "Permission denied"},
        {dir.string(), EACCES, "Permission denied"},
        {std::string("/bin/true\0x", 11), EINVAL, "Invalid argument"},
    };
    for (const auto& [program, errorNumber, text] : cases) {
        try {
            run({program, {}, {}, false});
            ADD_FAILURE() << program;
        } catch (const NotStarted& error) {
            EXPECT_EQ(error.errorNumber(), errorNumber) << program;
            EXPECT_EQ(error.what(), text) << program;
            EXPECT_EQ(error.step(), NotStarted::Step::spawn);
        }
    }
    EXPECT_THROW(run({"/bin/true", {std::string("a\0b", 3)}, {}, false}), NotStarted);
    EXPECT_THROW(run({"/bin/true", {std::string(4 * 1024 * 1024, 'x')}, {}, false}), NotStarted);
}

TEST(Process, theChildStartsClean)
{
    // A descriptor that nobody marked, an ignored signal and a blocked one: none may reach the child.
    const int leaky = ::open("/dev/null", O_RDONLY);
    ASSERT_GE(leaky, 0);
    const auto previous = ::signal(SIGINT, SIG_IGN);
    sigset_t blocked;
    sigset_t before;
    sigemptyset(&blocked);
    sigaddset(&blocked, SIGUSR1);
    pthread_sigmask(SIG_BLOCK, &blocked, &before);
    const Outcome descriptors = run({"/bin/ls", {"/proc/self/fd"}, {}, false});
    const Outcome status = run({"/bin/cat", {"/proc/self/status"}, {}, false});
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    ::signal(SIGINT, previous);
    ::close(leaky);
    EXPECT_EQ(descriptors.output, "0\n1\n2\n3\n") << "3 is the folder that is listed";
    EXPECT_NE(status.output.find("SigBlk:\t0000000000000000"), std::string::npos) << status.output;
    const std::string ignored = status.output.substr(status.output.find("SigIgn:\t") + 8, 16);
    EXPECT_EQ(std::stoull(ignored, nullptr, 16) & kStandardSignals, 0U) << ignored;
}

TEST(Process, manyThreadsAtOnceDoNotHoldEachOthersPipes)
{
    // A pipe end leaked into a program that waits would keep a quick program's reader waiting as well, for ever.
    const test::TempDir dir;
    ASSERT_EQ(::mkfifo((dir / "gate").c_str(), 0600), 0);
    Stop::descriptor(); // one for the whole process, made on first use
    const std::size_t before = openDescriptors();
    constexpr int kThreads = 8;
    std::atomic<int> wrong{0};
    std::atomic<int> held{kThreads};
    const auto quick = [&wrong](int thread) {
        for (int round = 0; round < 25; ++round) {
            const std::string text = std::to_string(thread) + ":" + std::to_string(round);
            if (run({"/bin/cat", {}, text, false}).output != text)
                ++wrong;
        }
    };
    std::vector<std::thread> threads;
    std::vector<std::thread> waiting;
    for (int thread = 0; thread < kThreads; ++thread) {
        threads.emplace_back(quick, thread);
        waiting.emplace_back([&dir, &held] {
            run({"/bin/cat", {(dir / "gate").string()}, {}, false});
            --held;
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    while (held > 0) { // whoever waits at the pipe gets its end when its last writer leaves
        const int gate = ::open((dir / "gate").c_str(), O_RDWR | O_CLOEXEC);
        ::usleep(2000);
        ::close(gate);
    }
    for (std::thread& thread : waiting)
        thread.join();
    EXPECT_EQ(wrong, 0);
    EXPECT_EQ(openDescriptors(), before);
}

TEST(Process, anInterruptedWaitGoesOn)
{
    struct sigaction action { };
    action.sa_handler = [](int) {};
    struct sigaction previous { };
    sigaction(SIGALRM, &action, &previous);
    const pthread_t self = pthread_self();
    std::atomic<bool> done{false};
    std::thread disturber([&] {
        while (!done) {
            pthread_kill(self, SIGALRM);
            ::usleep(500);
        }
    });
    const Outcome outcome = shell("sleep 0.2; cat; exit 4", std::string(300000, 'y'));
    done = true;
    disturber.join();
    sigaction(SIGALRM, &previous, nullptr);
    EXPECT_EQ(outcome.status, 4);
    EXPECT_EQ(outcome.output.size(), 300000U);
}

TEST(Process, aChildDiesWithItsParent)
{
    const test::TempDir dir;
    for (const bool ownSession : {true, false}) {
        const auto file = dir / (ownSession ? "own" : "ours");
        const pid_t parent = inAnotherProcess([&] {
            const std::string script = "trap '' TERM HUP; echo $$ > " + file.string() + "; exec sleep 60";
            std::thread([&] { run({"/bin/sh", {"-c", script}, {}, false, ownSession}); }).join();
        });
        const pid_t child = std::stoi(lineOf(file));
        ASSERT_TRUE(isRunning(child));
        ::kill(parent, SIGKILL);
        ::waitpid(parent, nullptr, 0);
        EXPECT_TRUE(endsSoon(child)) << "in its own session: " << ownSession;
    }
}

TEST(Process, aChildHasASessionWithoutATerminal)
{
    EXPECT_EQ(shell("test $$ = $(cut -d' ' -f6 /proc/$$/stat) && test 0 = $(cut -d' ' -f7 /proc/$$/stat)").status, 0);
    const Outcome ours = run({"/bin/sh", {"-c", "cut -d' ' -f6 /proc/$$/stat"}, {}, false, false});
    EXPECT_EQ(ours.output, std::to_string(::getsid(0)) + "\n");
}

TEST(Process, aRequestToStopEndsWhatRunsAndLetsNothingStart)
{
    const test::TempDir dir;
    const std::string file = (dir / "grandchild").string();
    // Neither the program nor what it has started listens; one of them has closed its streams besides.
    const std::vector<std::string> scripts{"trap '' TERM; (trap '' TERM; echo $$ >> " + file + "; exec sleep 60)",
        "trap '' TERM; exec >&- 2>&-; sleep 60; sleep 60", "sleep 60"};
    const pid_t worker = inAnotherProcess([&] {
        std::atomic<int> stopped{0};
        std::vector<std::thread> threads;
        for (const std::string& script : scripts)
            threads.emplace_back([&stopped, &script] { stopped += shell(script).stopped ? 1 : 0; });
        lineOf(file);
        ::usleep(100000);
        Stop::request("ended by a test");
        for (std::thread& thread : threads)
            thread.join();
        const bool isLate = !shell("touch " + file + ".late").stopped || std::filesystem::exists(file + ".late");
        ::_exit(stopped == 3 && !isLate && Stop::reason() == std::string("ended by a test") ? 0 : 1);
    });
    EXPECT_TRUE(succeedsSoon(worker));
    EXPECT_TRUE(endsSoon(std::stoi(lineOf(file))));
}

TEST(Process, aRequestToStopBreaksAWaitForTheNetworkOff)
{
    const int listener = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    ASSERT_EQ(::bind(listener, reinterpret_cast<sockaddr*>(&address), size), 0);
    ASSERT_EQ(::listen(listener, 1), 0); // the system takes the connection, and nobody ever answers
    ASSERT_EQ(::getsockname(listener, reinterpret_cast<sockaddr*>(&address), &size), 0);
    const pid_t worker = inAnotherProcess([&] {
        std::thread([] { ::usleep(200000), Stop::request("ended by a test"); }).detach();
        try {
            connectTls("127.0.0.1", ntohs(address.sin_port), std::chrono::seconds(60));
        } catch (const TlsFailure& failure) {
            ::_exit(failure.what() == std::string("this program was asked to stop") ? 0 : 2);
        } catch (...) {
            ::_exit(3);
        }
        ::_exit(1);
    });
    EXPECT_TRUE(succeedsSoon(worker));
    ::close(listener);
}

} // namespace
} // namespace mervo::platform
