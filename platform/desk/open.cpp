#include "platform/desk/applications/Desk.h"
#include "platform/desk/running/RunningApplications.h"
#include "platform/desk/settings/CommandWords.h"
#include "platform/process.h"
#include "platform/programs.h"

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

namespace {

constexpr std::chrono::milliseconds kPatience{2000}; // a program that could not be started says so by then
constexpr const char* kUsage = "usage: open [-g] [-j] (-b BUNDLE-ID | -a APPLICATION) [FILE...]";

struct Request {
    std::optional<std::string> bundleId, application;
    std::vector<std::filesystem::path> files;
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
void openFile(const std::filesystem::path& file, const std::string& own)
{
    std::error_code error;
    const std::filesystem::path path = std::filesystem::absolute(file, error);
    if (error || !std::filesystem::exists(path, error))
        throw Refused(fmt::format("the file {} does not exist", file.string()));
    const std::string name = own.empty() ? "xdg-open" : own;
    const std::filesystem::path program = platform::findProgram(name);
    if (program.empty())
        throw Refused(fmt::format("the program {} is not found", name));
    const auto outcome = platform::runDetached({.program = program, .arguments = {path.string()}}, kPatience);
    if (outcome && outcome->status != 0)
        throw Refused(desk::howItEnded(name, *outcome));
}

void open(const Request& request)
{
    const DeskApplication application = wanted(request);
    const desk::RunningApplications running(desk::Configuration::load(desk::deskSections()));
    if (request.files.empty())
        running.start(application);
    for (const std::filesystem::path& file : request.files)
        openFile(file, running.ownProgram(application));
}

} // namespace

/// open: starts an application of the desk, or opens files with it.
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
