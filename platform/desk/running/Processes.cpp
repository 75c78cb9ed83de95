#include "platform/desk/running/Processes.h"

#include "platform/files.h"
#include "platform/programs.h"

#include <charconv>
#include <filesystem>
#include <fstream>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>

namespace mervo::desk {
namespace {

namespace fs = std::filesystem;

/// How to recognise a program among the processes.
struct Program {
    fs::path file; ///< its real path; empty: not found
    fs::path name; ///< what it is called
    bool isScript = false;
    bool isLauncher = false; ///< its real path is a launcher of many programs
};

Program describe(const std::string& program)
{
    const fs::path found = platform::findProgram(program);
    Program result{.file = {}, .name = fs::path(program).filename()};
    if (found.empty())
        return result;
    std::error_code error;
    result.file = fs::canonical(found, error);
    result.isLauncher = result.file.filename() == "snap" || result.file.filename() == "flatpak";
    char start[2] = {};
    result.isScript = std::ifstream(result.file, std::ios::binary).read(start, 2) && std::string_view(start, 2) == "#!";
    return result;
}

/// The file that a process runs; empty when it is not ours to see, or has ended.
fs::path executable(const fs::path& process)
{
    constexpr std::string_view kReplaced = " (deleted)"; // by an update, while it runs
    std::error_code error;
    std::string file = fs::read_symlink(process / "exe", error).string();
    if (file.ends_with(kReplaced))
        file.erase(file.size() - kReplaced.size());
    return file;
}

/// Whether the script is what an interpreter was started with; the system puts one option of the interpreter before it.
bool interprets(const fs::path& process, const fs::path& script)
{
    std::ifstream stream(process / "cmdline", std::ios::binary);
    std::string word;
    for (int index = 0; index < 3 && std::getline(stream, word, '\0'); ++index) {
        std::error_code error;
        if (index > 0 && word.find('/') != std::string::npos && fs::canonical(word, error) == script)
            return true;
    }
    return false;
}

bool runs(const fs::path& process, const Program& program)
{
    const fs::path file = executable(process);
    if (file.empty())
        return false;
    if (program.file.empty() || program.isLauncher)
        return file.filename() == program.name;
    return file == program.file
        || (program.isScript && (file.filename() == program.name || interprets(process, program.file)));
}

bool isOurs(const fs::path& process)
{
    struct stat status = {};
    return ::stat(process.c_str(), &status) == 0 && status.st_uid == ::geteuid();
}

} // namespace

std::vector<pid_t> processesOf(const std::string& program)
{
    std::vector<pid_t> found;
    const Program wanted = describe(program);
    if (wanted.name.empty())
        return found;
    std::error_code error;
    for (const auto& entry : fs::directory_iterator("/proc", error)) {
        const std::string number = entry.path().filename();
        pid_t id = 0;
        const auto [end, problem] = std::from_chars(number.data(), number.data() + number.size(), id);
        if (problem == std::errc() && *end == '\0' && isOurs(entry.path()) && runs(entry.path(), wanted))
            found.push_back(id);
    }
    return found;
}

} // namespace mervo::desk
