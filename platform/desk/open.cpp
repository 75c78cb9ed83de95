#include "platform/ascii.h"
#include "platform/desk/applications/Desk.h"
#include "platform/desk/running/RunningApplications.h"
#include "platform/desk/settings/CommandWords.h"
#include "platform/desk/terminal/OwnerTerminal.h"
#include "platform/desk/terminal/TerminalSessions.h"
#include "platform/desk/terminal/WindowShell.h"
#include "platform/process.h"
#include "platform/programs.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fmt/format.h>
#include <optional>
#include <string>
#include <unistd.h>
#include <vector>

using namespace mervo;
using desk::DeskApplication;
namespace fs = std::filesystem;

namespace {

constexpr std::chrono::milliseconds kPatience{2000}; // a program that could not be started says so by then
constexpr const char* kUsage = "usage: open [-g] [-j] (-b BUNDLE-ID | -a APPLICATION) [FILE...]";

struct Request {
    std::optional<std::string> bundleId, application;
    std::vector<fs::path> files;
};

class Refused final : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// -g (in the background) and -j (hidden) change nothing: a presence has no window, and the desktop places those of
/// other programs.
Request readArguments(int argc, char** argv)
{
    Request request;
    opterr = 0; // the usage says it
    for (int option = 0; (option = ::getopt(argc, argv, "b:a:gj")) != -1;) {
        if (option == 'b') {
            request.bundleId = optarg;
        } else if (option == 'a') {
            request.application = optarg;
        } else if (option == '?') {
            throw Refused(kUsage);
        }
    }
    request.files.assign(argv + optind, argv + argc);
    if (request.bundleId.has_value() == request.application.has_value())
        throw Refused(kUsage);
    return request;
}

DeskApplication wanted(const Request& request)
{
    const auto found = request.bundleId ? desk::applicationWithBundleId(*request.bundleId)
                                        : desk::applicationNamed(*request.application);
    if (!found)
        throw Refused(
            fmt::format("unknown application “{}”", request.bundleId ? *request.bundleId : *request.application));
    return *found;
}

/// The owner's own program gets the file, else the desktop's for that kind of file.
void openFile(const fs::path& file, const std::string& own)
{
    std::error_code error;
    const fs::path path = fs::absolute(file, error);
    if (error || !fs::exists(path, error))
        throw Refused(fmt::format("the file {} does not exist", file.string()));
    const std::string name = own.empty() ? "xdg-open" : own;
    const fs::path program = platform::findProgram(name);
    if (program.empty())
        throw Refused(fmt::format("the program {} is not found", name));
    const auto outcome = platform::runDetached({.program = program, .arguments = {path.string()}}, kPatience);
    if (outcome && outcome->status != 0)
        throw Refused(desk::howItEnded(name, *outcome));
}

/// The application of scripts that a terminal's name stands for; empty: no terminal's.
std::string terminalNamed(const std::string& name)
{
    for (const auto& [known, application] :
        {std::pair("Terminal", "Terminal"), std::pair("iTerm", "iTerm2"), std::pair("iTerm2", "iTerm2")}) {
        if (platform::ascii::equalsIgnoringCase(name, known))
            return application;
    }
    return {};
}

/// What the shell of a new window is given to run a file.
std::string lineFor(const fs::path& file)
{
    std::error_code error;
    const fs::path path = fs::absolute(file, error);
    if (error || !fs::exists(path, error))
        throw Refused(fmt::format("the file {} does not exist", file.string()));
    if (!fs::is_regular_file(path, error) || ::access(path.c_str(), X_OK) != 0)
        throw Refused(fmt::format("the file {} is not one that you may execute (chmod +x)", file.string()));
    return desk::shellQuoted(path.string());
}

/// A window for each file, or one with a shell alone. It stays when the file has run, so that what that said is seen.
void openTerminal(
    const desk::OwnerTerminal& terminal, const std::string& application, const std::vector<fs::path>& files)
{
    std::vector<std::string> lines(files.size());
    std::ranges::transform(files, lines.begin(), lineFor);
    if (lines.empty())
        lines.emplace_back();
    for (const std::string& line : lines)
        desk::openSession(terminal, {.id = desk::newSessionId(), .request = {application, line}});
}

/// A program or a desktop entry by its path: a terminal for what is a command, else a program that takes the file.
void openAt(const std::string& path, const std::vector<fs::path>& files)
{
    const desk::OwnerTerminal program = desk::terminalAt(path);
    const bool isForCommands =
        std::ranges::all_of(files, [](const fs::path& file) { return file.extension() == ".command"; });
    if (isForCommands)
        return openTerminal(program, fs::path(path).stem(), files);
    for (const fs::path& file : files)
        openFile(file, program.program);
}

void open(const Request& request)
{
    const std::string named = request.application.value_or("");
    if (const std::string terminal = terminalNamed(named); !terminal.empty())
        return openTerminal(
            desk::ownerTerminal(desk::Configuration::load(desk::deskSections())), terminal, request.files);
    if (named.find('/') != std::string::npos)
        return openAt(named, request.files);
    const DeskApplication application = wanted(request);
    const desk::RunningApplications running(desk::Configuration::load(desk::deskSections()));
    if (request.files.empty())
        running.start(application);
    for (const fs::path& file : request.files)
        openFile(file, running.ownProgram(application));
}

} // namespace

/// open: starts an application of the desk, or opens files with it; runs commands in the owner's terminal.
int main(int argc, char** argv)
{
    try {
        open(readArguments(argc, argv));
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "open: %s\n", error.what());
        return 1;
    }
}
