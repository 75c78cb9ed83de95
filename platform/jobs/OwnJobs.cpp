#include "platform/jobs/OwnJobs.h"

#include "platform/desktop_entry.h"
#include "platform/files.h"
#include "platform/folders.h"
#include "platform/jobs/JobPlaces.h"
#include "platform/lock.h"
#include "platform/process.h"
#include "platform/programs.h"

#include <algorithm>
#include <charconv>
#include <fmt/format.h>
#include <system_error>

namespace mervo::jobs::own {

namespace {

namespace fs = std::filesystem;

constexpr const char* kRunner = "launchd";

[[noreturn]] void fail(std::string_view what, const std::error_code& error)
{
    throw std::runtime_error(fmt::format("{}: {}", what, error.message()));
}

fs::path autostartEntry()
{
    return platform::configurationFolder() / "autostart" / "mervo-jobs.desktop";
}

/// An entry that names this runner stays as it is: desktops switch one off in place.
void startAtLogin()
{
    const std::string command =
        "Exec=" + platform::desktopExecWord(platform::platformProgram(kRunner).string()) + " --login\n";
    const fs::path file = autostartEntry();
    if (platform::readFile(file).value_or("").find(command) != std::string::npos)
        return;
    const std::string text =
        "[Desktop Entry]\nType=Application\nName=Mervo's jobs\nComment=Starts your automations at their times\n"
        + command + "NoDisplay=true\nTerminal=false\nX-GNOME-Autostart-enabled=true\n";
    std::error_code error = platform::createPrivateFolder(file.parent_path());
    if (!error)
        error = platform::replaceFile(file, text);
    if (error)
        fail(file.string(), error);
}

} // namespace

void link(const Job& job)
{
    std::error_code error;
    fs::create_symlink(fs::absolute(job.file), loadedFolder() / job.label, error);
    if (error)
        fail((loadedFolder() / job.label).string(), error);
}

void ask(const std::string& label)
{
    if (const std::error_code error = platform::makeFilePrivate(requestsFolder() / label))
        fail((requestsFolder() / label).string(), error);
}

void makeFolders()
{
    for (const fs::path& folder : {agentsFolder(), loadedFolder(), requestsFolder(), runsFolder()}) {
        if (const std::error_code error = platform::createPrivateFolder(folder))
            fail(folder.string(), error);
    }
}

std::vector<std::string> loaded()
{
    std::vector<std::string> labels;
    std::error_code error;
    for (fs::directory_iterator entry(loadedFolder(), error), end; !error && entry != end; entry.increment(error))
        labels.push_back(entry->path().filename());
    std::ranges::sort(labels);
    return labels;
}

bool isLoaded(const std::string& label)
{
    std::error_code error;
    return fs::is_symlink(loadedFolder() / label, error);
}

fs::path propertyList(const std::string& label)
{
    std::error_code error;
    return fs::read_symlink(loadedFolder() / label, error);
}

void load(const Job& job)
{
    makeFolders();
    startAtLogin();
    link(job);
    try {
        if (job.runAtLoad) {
            requestRun(job.label);
        } else {
            startRunner();
        }
    } catch (const std::exception&) {
        unload(job.label);
        throw;
    }
}

bool unload(const std::string& label)
{
    std::error_code error;
    if (!fs::remove(loadedFolder() / label, error)) {
        if (error)
            fail((loadedFolder() / label).string(), error);
        return false;
    }
    if (loaded().empty())
        fs::remove(autostartEntry(), error);
    return true;
}

void requestRun(const std::string& label)
{
    ask(label);
    startRunner();
}

void startRunner()
{
    const fs::path program = platform::platformProgram(kRunner);
    try {
        const platform::Outcome outcome = platform::run({.program = program});
        if (outcome.status != 0)
            throw std::runtime_error("the runner could not be started: " + outcome.error);
    } catch (const platform::NotStarted& error) {
        throw std::runtime_error(fmt::format("{}: {}", program.string(), error.what()));
    }
}

Runner runner()
{
    constexpr std::string_view kReplaced = " (deleted)"; // proc(5), /proc/pid/exe
    const std::string holder = platform::FileLock::lastHolder(lockFile());
    std::error_code error;
    std::string program = fs::read_symlink("/proc/" + holder + "/exe", error).filename();
    Runner runner;
    runner.isOutdated = program.ends_with(kReplaced);
    if (runner.isOutdated)
        program.erase(program.size() - kReplaced.size());
    if (program == kRunner)
        std::from_chars(holder.data(), holder.data() + holder.size(), runner.process);
    return runner;
}

} // namespace mervo::jobs::own
