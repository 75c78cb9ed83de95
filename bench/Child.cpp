#include "bench/Child.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <fstream>
#include <spawn.h>
#include <stdexcept>
#include <sys/resource.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

namespace mervo::bench {
namespace {

void check(bool good, const std::string& what)
{
    if (!good)
        throw std::runtime_error(what + ": " + std::strerror(errno));
}

std::int64_t nanoseconds(const timeval& time)
{
    return time.tv_sec * 1'000'000'000LL + time.tv_usec * 1'000LL;
}

} // namespace

Child::Child(const Words& command)
{
    std::array<int, 2> in{}, out{};
    check(pipe2(in.data(), O_CLOEXEC) == 0 && pipe2(out.data(), O_CLOEXEC) == 0, "no pipe");
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, in[0], STDIN_FILENO);
    posix_spawn_file_actions_adddup2(&actions, out[1], STDOUT_FILENO);
    std::vector<char*> arguments;
    for (const std::string& word : command)
        arguments.push_back(const_cast<char*>(word.c_str()));
    arguments.push_back(nullptr);
    const int error = posix_spawnp(&pid_, arguments[0], &actions, nullptr, arguments.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    close(in[0]);
    close(out[1]);
    in_ = in[1];
    out_ = out[0];
    if (error != 0) {
        pid_ = -1;
        throw std::runtime_error(command[0] + ": " + std::strerror(error));
    }
}

Child::~Child()
{
    if (in_ >= 0)
        close(in_);
    if (out_ >= 0)
        close(out_);
    if (pid_ > 0) {
        kill(pid_, SIGKILL);
        waitpid(pid_, nullptr, 0);
    }
}

void Child::send(std::string_view line)
{
    while (!line.empty()) {
        const ssize_t count = write(in_, line.data(), line.size());
        check(count > 0, "the child reads no more");
        line.remove_prefix(static_cast<std::size_t>(count));
    }
}

bool Child::fill()
{
    std::array<char, 65'536> block;
    const ssize_t count = read(out_, block.data(), block.size());
    if (count > 0)
        buffer_.append(block.data(), static_cast<std::size_t>(count));
    return count > 0;
}

std::string Child::answer()
{
    while (true) {
        if (const std::size_t end = buffer_.find('\n'); end != std::string::npos) {
            std::string line = buffer_.substr(0, end);
            buffer_.erase(0, end + 1);
            if (line.find("\"method\":") == std::string::npos)
                return line;
        } else if (!fill()) {
            throw std::runtime_error("the child ended without an answer");
        }
    }
}

std::int64_t Child::finish()
{
    close(in_);
    in_ = -1;
    while (fill())
        ;
    int status = 0;
    rusage usage{};
    const pid_t ended = wait4(pid_, &status, 0, &usage);
    check(ended == pid_, "cannot wait");
    pid_ = -1;
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0)
        throw std::runtime_error("the child failed: " + buffer_);
    return nanoseconds(usage.ru_utime) + nanoseconds(usage.ru_stime);
}

std::int64_t Child::cpu() const
{
    clockid_t clock{};
    timespec time{};
    check(clock_getcpuclockid(pid_, &clock) == 0 && clock_gettime(clock, &time) == 0, "no processor time");
    return time.tv_sec * 1'000'000'000LL + time.tv_nsec;
}

std::int64_t Child::statusKib(std::string_view key) const
{
    std::ifstream status("/proc/" + std::to_string(pid_) + "/status");
    for (std::string line; std::getline(status, line);) {
        if (line.starts_with(key) && line[key.size()] == ':')
            return std::stoll(line.substr(key.size() + 1));
    }
    return -1;
}

} // namespace mervo::bench
