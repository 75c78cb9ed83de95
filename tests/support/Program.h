#pragma once

#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <filesystem>
#include <map>
#include <optional>
#include <poll.h>
#include <stdexcept>
#include <string>
#include <string_view>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

/// Real programs in tests: started, fed, drained and always ended.
namespace mervo::test {

/// How a program ended and what it wrote.
struct Ended {
    int status = -1; ///< exit status, -1 when a signal ended it
    int signal = 0;
    std::string out;
    std::string err;
};

/// Changes to this process's environment for the child; an absent value takes the variable away.
using Environment = std::map<std::string, std::optional<std::string>>;

/// The folder "Contents" of the build under test: test programs stand in Contents/Tests.
inline std::filesystem::path bundle()
{
    return std::filesystem::canonical("/proc/self/exe").parent_path().parent_path();
}

/// A program that runs while the test goes on. Killed, with its process group, when the object dies first.
class Program {
public:
    Program(
        const std::filesystem::path& path, const std::vector<std::string>& arguments, const Environment& changes = {})
    {
        std::array<std::array<int, 2>, 3> pipes{};
        for (auto& ends : pipes) {
            if (::pipe2(ends.data(), O_CLOEXEC) != 0)
                throw std::runtime_error("no pipe");
        }
        std::vector<std::string> words{path.string()};
        words.insert(words.end(), arguments.begin(), arguments.end());
        std::vector<char*> argv = pointers(words);
        std::vector<std::string> variables = environment(changes);
        std::vector<char*> envp = pointers(variables);
        pid_ = ::fork();
        if (pid_ < 0)
            throw std::runtime_error("no process");
        if (pid_ == 0) {
            ::setpgid(0, 0);
            ::dup2(pipes[0][0], 0);
            ::dup2(pipes[1][1], 1);
            ::dup2(pipes[2][1], 2);
            ::signal(SIGPIPE, SIG_DFL);
            ::execve(argv[0], argv.data(), envp.data());
            ::_exit(127);
        }
        ::setpgid(pid_, pid_);
        ::close(pipes[0][0]);
        ::close(pipes[1][1]);
        ::close(pipes[2][1]);
        input_ = pipes[0][1];
        output_ = pipes[1][0];
        error_ = pipes[2][0];
        ::fcntl(input_, F_SETFL, O_NONBLOCK);
    }
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;
    ~Program()
    {
        if (pid_ > 0) {
            ::kill(-pid_, SIGKILL);
            ::waitpid(pid_, nullptr, 0);
        }
        for (int* descriptor : {&input_, &output_, &error_})
            closeOnce(*descriptor);
    }

    pid_t pid() const { return pid_; }

    /// Queues bytes for standard input; they go out while the program is drained.
    void write(std::string_view bytes) { unsent_ += bytes; }
    /// No more input after what is queued.
    void closeInput() { inputEnds_ = true; }

    /// The next line of standard output without its line feed; nothing at its end. Throws at the time limit.
    std::optional<std::string> readLine(std::chrono::milliseconds limit = std::chrono::seconds(60))
    {
        const auto deadline = Clock::now() + limit;
        while (out_.find('\n', read_) == std::string::npos && output_ >= 0)
            pump(deadline);
        const auto end = out_.find('\n', read_);
        if (end == std::string::npos)
            return std::nullopt;
        std::string line = out_.substr(read_, end - read_);
        read_ = end + 1;
        return line;
    }

    /// Closes the input, waits for the end, and gives everything that the program wrote. Throws at the time limit.
    Ended finish(std::chrono::milliseconds limit = std::chrono::seconds(60))
    {
        const auto deadline = Clock::now() + limit;
        closeInput();
        while (output_ >= 0 || error_ >= 0)
            pump(deadline);
        int status = 0;
        while (::waitpid(pid_, &status, WNOHANG) == 0) {
            if (Clock::now() > deadline)
                throw std::runtime_error("the program did not end");
            ::usleep(1000);
        }
        pid_ = -1;
        Ended ended;
        ended.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
        ended.signal = WIFSIGNALED(status) ? WTERMSIG(status) : 0;
        ended.out = out_;
        ended.err = err_;
        return ended;
    }

private:
    using Clock = std::chrono::steady_clock;

    static std::vector<char*> pointers(std::vector<std::string>& words)
    {
        std::vector<char*> list;
        for (auto& word : words)
            list.push_back(word.data());
        list.push_back(nullptr);
        return list;
    }

    static std::vector<std::string> environment(const Environment& changes)
    {
        std::map<std::string, std::string> variables;
        for (char** entry = ::environ; *entry != nullptr; ++entry) {
            const std::string text = *entry;
            variables[text.substr(0, text.find('='))] = text;
        }
        for (const auto& [name, value] : changes) {
            variables.erase(name);
            if (value)
                variables[name] = name + "=" + *value;
        }
        std::vector<std::string> list;
        for (const auto& [name, text] : variables)
            list.push_back(text);
        return list;
    }

    static void closeOnce(int& descriptor)
    {
        if (descriptor >= 0)
            ::close(descriptor);
        descriptor = -1;
    }

    static void drain(int& descriptor, std::string& into)
    {
        std::array<char, 65536> block{};
        const ssize_t count = ::read(descriptor, block.data(), block.size());
        if (count > 0) {
            into.append(block.data(), static_cast<std::size_t>(count));
        } else if (count == 0 || errno != EINTR) {
            closeOnce(descriptor);
        }
    }

    void feed()
    {
        ::signal(SIGPIPE, SIG_IGN); // a program that stops reading is its own business
        const ssize_t count = ::write(input_, unsent_.data(), unsent_.size());
        if (count > 0) {
            unsent_.erase(0, static_cast<std::size_t>(count));
        } else if (errno != EAGAIN && errno != EINTR) {
            closeOnce(input_);
        }
    }

    void pump(Clock::time_point deadline)
    {
        if (inputEnds_ && unsent_.empty())
            closeOnce(input_);
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now()).count();
        if (left <= 0)
            throw std::runtime_error("time limit; so far it wrote: " + out_ + err_);
        std::array<pollfd, 3> polled{
            pollfd{output_, POLLIN, 0}, pollfd{error_, POLLIN, 0}, pollfd{unsent_.empty() ? -1 : input_, POLLOUT, 0}};
        ::poll(polled.data(), polled.size(), static_cast<int>(left));
        if (polled[0].revents != 0)
            drain(output_, out_);
        if (polled[1].revents != 0)
            drain(error_, err_);
        if (polled[2].revents != 0)
            feed();
    }

    pid_t pid_ = -1;
    int input_ = -1;
    int output_ = -1;
    int error_ = -1;
    bool inputEnds_ = false;
    std::string unsent_;
    std::string out_;
    std::string err_;
    std::size_t read_ = 0; ///< how much of out_ has been given away as lines
};

/// Runs a program to its end with this text on its standard input.
inline Ended runProgram(const std::filesystem::path& path, const std::vector<std::string>& arguments,
    const Environment& changes = {}, std::string_view input = {},
    std::chrono::milliseconds limit = std::chrono::seconds(60))
{
    Program program(path, arguments, changes);
    program.write(input);
    return program.finish(limit);
}

} // namespace mervo::test
