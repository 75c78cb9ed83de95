#include "platform/process.h"

#include "platform/files.h"

#include <charconv>
#include <csignal>
#include <ctime>
#include <filesystem>
#include <sstream>
#include <thread>
#include <unistd.h>

namespace mervo::platform {

namespace {

constexpr int kState = 3, kParent = 4, kSession = 6, kStart = 22; // numbers of fields, proc(5)

std::string contentOf(std::int64_t processId, const char* name)
{
    return readFile("/proc/" + std::to_string(processId) + "/" + name).value_or("");
}

/// How long ago something was that happened so many clock ticks after the system's start.
std::chrono::seconds ageOf(std::int64_t ticks)
{
    timespec now{};
    ::clock_gettime(CLOCK_BOOTTIME, &now);
    return std::chrono::seconds(now.tv_sec - ticks / ::sysconf(_SC_CLK_TCK));
}

std::vector<std::string> wordsOf(const std::string& commandLine)
{
    std::vector<std::string> words;
    std::istringstream stream(commandLine);
    for (std::string word; std::getline(stream, word, '\0');)
        words.push_back(std::move(word));
    return words;
}

/// True when there was a process to be sent it.
bool sendToSession(std::int64_t leader, int signal)
{
    bool isSent = false;
    std::error_code unreadable;
    for (std::filesystem::directory_iterator entry("/proc", unreadable), end; !unreadable && entry != end;
         entry.increment(unreadable)) {
        const std::string name = entry->path().filename().string();
        pid_t process = 0;
        std::from_chars(name.data(), name.data() + name.size(), process);
        const auto facts = process > 1 ? processFacts(process) : std::nullopt;
        if (facts && facts->session == leader && !facts->isEnding)
            isSent = ::kill(process, signal) == 0 || isSent;
    }
    return isSent;
}

} // namespace

bool endSession(std::int64_t leader, std::chrono::milliseconds mercy)
{
    constexpr std::chrono::milliseconds kPause(50);
    const auto end = std::chrono::steady_clock::now() + mercy;
    if (leader <= 1 || !sendToSession(leader, SIGTERM))
        return false;
    while (sendToSession(leader, 0) && std::chrono::steady_clock::now() < end)
        std::this_thread::sleep_for(kPause);
    while (sendToSession(leader, SIGKILL))
        std::this_thread::sleep_for(kPause);
    return true;
}

std::optional<ProcessFacts> processFacts(std::int64_t processId)
{
    const std::string status = contentOf(processId, "stat");
    const auto nameEnd = status.rfind(')'); // a program's name may hold anything
    if (nameEnd == std::string::npos)
        return std::nullopt;
    ProcessFacts facts;
    std::istringstream rest(status.substr(nameEnd + 1));
    std::string field;
    for (int number = kState; rest >> field; ++number) {
        std::int64_t value = 0;
        std::from_chars(field.data(), field.data() + field.size(), value);
        if (number == kState)
            facts.isEnding = field == "Z" || field == "X";
        if (number == kParent)
            facts.parent = value;
        if (number == kSession)
            facts.session = value;
        if (number == kStart)
            facts.age = ageOf(value);
    }
    facts.words = wordsOf(contentOf(processId, "cmdline"));
    return facts;
}

std::vector<std::string> environment()
{
    std::vector<std::string> variables;
    for (char** variable = environ; variable != nullptr && *variable != nullptr; ++variable)
        variables.emplace_back(*variable);
    return variables;
}

std::int64_t ownProcess() noexcept
{
    return ::getpid();
}

} // namespace mervo::platform
