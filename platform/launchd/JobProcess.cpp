#include "platform/launchd/JobProcess.h"

#include "platform/descriptor.h"
#include "platform/folders.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace mervo::jobs {

namespace {

enum class Step : int { session, folder, output, error, program };

/// What the new process tells when it cannot become the program.
struct Failure {
    Step step;
    int number; // errno
};

void resetSignals()
{
    for (int signal = 1; signal <= SIGRTMAX; ++signal)
        ::signal(signal, SIG_DFL);
    sigset_t none;
    sigemptyset(&none);
    ::sigprocmask(SIG_SETMASK, &none, nullptr);
}

bool append(const std::string& file, int descriptor)
{
    const char* name = file.empty() ? "/dev/null" : file.c_str();
    // A pipe that nobody reads must not hold the start up.
    constexpr int kFlags = O_WRONLY | O_CREAT | O_APPEND | O_NOCTTY | O_CLOEXEC;
    const int opened = ::open(name, kFlags | O_NONBLOCK, 0600);
    return opened >= 0 && ::fcntl(opened, F_SETFL, kFlags) == 0 && ::dup2(opened, descriptor) >= 0;
}

bool readNothing()
{
    const int null = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
    return null >= 0 && ::dup2(null, STDIN_FILENO) >= 0;
}

/// Runs in the new process, which has one thread as this one has. Gives the step that failed, with errno set.
Step become(const Job& job, const std::string& folder, const std::vector<char*>& arguments, const RunRecord& record)
{
    resetSignals();
    if (::setsid() < 0 || !readNothing())
        return Step::session;
    if (::chdir(folder.c_str()) != 0)
        return Step::folder;
    if (!append(job.standardOutput, STDOUT_FILENO))
        return Step::output;
    if (!append(job.standardError, STDERR_FILENO))
        return Step::error;
    for (const auto& [name, value] : job.environment)
        ::setenv(name.c_str(), value.c_str(), 1);
    record.writeRunning();
    ::execvp(arguments[0], arguments.data());
    return Step::program;
}

std::string inWords(const Failure& failure, const Job& job, const std::string& folder)
{
    const std::string reason = std::string(": ") + std::strerror(failure.number);
    switch (failure.step) {
    case Step::session:
        return "a process of its own" + reason;
    case Step::folder:
        return "its folder " + folder + reason;
    case Step::output:
        return "its standard output " + job.standardOutput + reason;
    case Step::error:
        return "its standard error " + job.standardError + reason;
    case Step::program:
        return "its program " + job.arguments.front() + reason;
    }
    return reason;
}

} // namespace

pid_t start(const Job& job, const RunRecord& record)
{
    const std::string folder = job.workingDirectory.empty() ? platform::userHome().string() : job.workingDirectory;
    std::vector<char*> arguments;
    for (const std::string& argument : job.arguments)
        arguments.push_back(const_cast<char*>(argument.c_str()));
    arguments.push_back(nullptr);
    std::array<int, 2> ends{};
    if (::pipe2(ends.data(), O_CLOEXEC) != 0)
        throw NotStarted(inWords({Step::session, errno}, job, folder));
    const platform::Descriptor told(ends[0]);
    platform::Descriptor tell(ends[1]);
    const pid_t process = ::fork();
    if (process < 0)
        throw NotStarted(inWords({Step::session, errno}, job, folder));
    if (process == 0) {
        const Step step = become(job, folder, arguments, record);
        const Failure failure{step, errno};
        (void)!::write(tell.get(), &failure, sizeof failure);
        ::_exit(EXIT_FAILURE);
    }
    tell.close();
    Failure failure{};
    ssize_t count = 0;
    while ((count = ::read(told.get(), &failure, sizeof failure)) < 0 && errno == EINTR) { }
    if (count != sizeof failure)
        return process;
    while (::waitpid(process, nullptr, 0) < 0 && errno == EINTR) { }
    throw NotStarted(inWords(failure, job, folder));
}

} // namespace mervo::jobs
