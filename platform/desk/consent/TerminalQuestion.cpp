#include "platform/desk/consent/TerminalQuestion.h"

#include "platform/files.h"

#include <array>
#include <cstring>
#include <fstream>
#include <optional>
#include <pwd.h>
#include <string_view>
#include <sys/stat.h>
#include <termios.h>
#include <unistd.h>
#include <utmpx.h>

namespace mervo::desk {
namespace {

constexpr int kTries = 3;
constexpr std::string_view kDevices = "/dev/";

bool isSameDevice(int one, int other)
{
    struct stat first {
    }, second{};
    return ::fstat(one, &first) == 0 && ::fstat(other, &second) == 0 && S_ISCHR(first.st_mode)
        && S_ISCHR(second.st_mode) && first.st_rdev == second.st_rdev;
}

bool isOurTerminal()
{
    return ::isatty(STDIN_FILENO) == 1 && ::tcgetsid(STDIN_FILENO) == ::getsid(0)
        && isSameDevice(STDIN_FILENO, STDERR_FILENO) && ::tcgetpgrp(STDIN_FILENO) == ::getpgrp();
}

/// The name of the terminal in the record of logins ("pts/3"); empty when it has none.
std::string terminalLine()
{
    std::array<char, 256> name{};
    if (::ttyname_r(STDIN_FILENO, name.data(), name.size()) != 0)
        return {};
    const std::string_view path = name.data();
    return path.starts_with(kDevices) ? std::string(path.substr(kDevices.size())) : std::string();
}

std::string userName()
{
    const passwd* entry = ::getpwuid(::getuid());
    return entry == nullptr ? std::string() : entry->pw_name;
}

/// 0 when the system does not say.
pid_t parentOf(pid_t process)
{
    std::ifstream stream("/proc/" + std::to_string(process) + "/stat");
    std::string line;
    std::getline(stream, line);
    const std::size_t name = line.rfind(')'); // "12 (any name) S 11 ..."
    return name == std::string::npos || line.size() < name + 4 ? 0
                                                               : static_cast<pid_t>(std::atol(line.c_str() + name + 4));
}

bool isAboveUs(pid_t process)
{
    for (pid_t above = ::getppid(); above > 0; above = parentOf(above)) {
        if (above == process)
            return true;
    }
    return false;
}

template <std::size_t Size>
std::string_view field(const char (&text)[Size])
{
    return {text, ::strnlen(text, Size)};
}

bool isLogin(const utmpx& entry, const std::string& line, const std::string& user)
{
    return entry.ut_type == USER_PROCESS && field(entry.ut_line) == line && field(entry.ut_user) == user
        && isAboveUs(entry.ut_pid);
}

bool someoneLoggedInHere(const std::filesystem::path& logins)
{
    const std::string line = terminalLine(), user = userName();
    const auto records = platform::readFile(logins);
    if (line.empty() || user.empty() || !records)
        return false;
    for (std::size_t at = 0; at + sizeof(utmpx) <= records->size(); at += sizeof(utmpx)) {
        utmpx entry{};
        std::memcpy(&entry, records->data() + at, sizeof entry);
        if (isLogin(entry, line, user))
            return true;
    }
    return false;
}

bool say(std::string_view text)
{
    return ::write(STDERR_FILENO, text.data(), text.size()) == static_cast<ssize_t>(text.size());
}

/// Without its line end; nothing at the end of input.
std::optional<std::string> typedLine()
{
    std::string line;
    char c = 0;
    ssize_t count = 0;
    while ((count = ::read(STDIN_FILENO, &c, 1)) == 1 && c != '\n')
        line += c;
    return count == 1 ? std::optional(line) : std::nullopt;
}

} // namespace

Answer askAtTerminal(const std::string& sentence, const std::filesystem::path& logins)
{
    if (!isOurTerminal() || !someoneLoggedInHere(logins) || !say(sentence + "\n"))
        return Answer::nobody;
    for (int i = 0; i < kTries; ++i) {
        ::tcflush(STDIN_FILENO, TCIFLUSH);
        if (!say("Type \"allow\" or \"refuse\": "))
            break;
        const auto typed = typedLine();
        if (!typed)
            break;
        if (*typed == "allow")
            return Answer::allow;
        if (*typed == "refuse")
            return Answer::refuse;
    }
    return Answer::nobody;
}

} // namespace mervo::desk
