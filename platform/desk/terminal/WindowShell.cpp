#include "platform/desk/terminal/WindowShell.h"

#include "platform/programs.h"

#include <cstdlib>
#include <filesystem>
#include <pwd.h>
#include <string_view>
#include <unistd.h>

namespace mervo::desk {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view kReplaced = "exec bash ";

bool canRun(const char* shell)
{
    return shell != nullptr && *shell == '/' && ::access(shell, X_OK) == 0;
}

} // namespace

std::string ownerShell()
{
    if (const char* shell = std::getenv("SHELL"); canRun(shell))
        return shell;
    const passwd* user = ::getpwuid(::geteuid()); // NOLINT(concurrency-mt-unsafe): called before any thread
    return user != nullptr && canRun(user->pw_shell) ? user->pw_shell : "/bin/sh";
}

std::string shellQuoted(const std::string& text)
{
    std::string quoted = "'";
    for (const char c : text)
        quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return quoted + "'";
}

std::vector<std::string> shellCommand(const std::string& shell, const std::string& text)
{
    if (text.empty())
        return {shell};
    if (text.starts_with(kReplaced)) {
        const std::string path = text.substr(kReplaced.size());
        const fs::path bash = platform::findProgram("bash");
        std::error_code error;
        if (path.starts_with('/') && !bash.empty() && fs::is_regular_file(path, error))
            return {bash, path};
    }
    return {shell, "-c", text + "\nexec " + shellQuoted(shell)};
}

} // namespace mervo::desk
