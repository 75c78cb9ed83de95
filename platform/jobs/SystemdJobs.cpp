#include "platform/jobs/SystemdJobs.h"

#include "platform/descriptor.h"
#include "platform/files.h"
#include "platform/folders.h"
#include "platform/jobs/SystemdUnits.h"
#include "platform/process.h"
#include "platform/programs.h"

#include <algorithm>
#include <cstdlib>
#include <fmt/format.h>
#include <fmt/ranges.h>
#include <pwd.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <system_error>
#include <unistd.h>

namespace mervo::jobs::systemd {

namespace {

namespace fs = std::filesystem;

constexpr const char* kSystemctl = "systemctl";
constexpr const char* kRuntimeFolder = "XDG_RUNTIME_DIR";
constexpr const char* kLingering = "/var/lib/systemd/linger";
constexpr std::string_view kService = ".service", kTimer = ".timer";

/// The units of a job, and the links by which the manager starts them when it starts itself.
struct Files {
    explicit Files(const std::string& label)
    {
        const fs::path folder = platform::configurationFolder() / "systemd" / "user";
        service = folder / (label + ".service");
        timer = folder / (label + ".timer");
        serviceLink = folder / "default.target.wants" / service.filename();
        timerLink = folder / "timers.target.wants" / timer.filename();
    }
    fs::path service, timer, serviceLink, timerLink;
};

fs::path runtimeFolder()
{
    const char* folder = std::getenv(kRuntimeFolder);
    return folder != nullptr && *folder == '/' ? fs::path(folder) : fs::path("/run/user") / std::to_string(::getuid());
}

void systemctl(std::vector<std::string> arguments)
{
    const fs::path program = platform::findProgram(kSystemctl);
    if (program.empty())
        throw std::runtime_error("systemctl is not found. Install systemd, or let the own runner start jobs: "
                                 "runner = \"own\" in [jobs] of desk.toml.");
    ::setenv(kRuntimeFolder, runtimeFolder().c_str(), 0); // where systemctl finds the manager
    arguments.insert(arguments.begin(), "--user");
    try {
        const platform::Outcome outcome = platform::run({.program = program, .arguments = arguments});
        if (outcome.status != 0)
            throw std::runtime_error(fmt::format("systemctl {} ended with status {}: {}", fmt::join(arguments, " "),
                outcome.status, outcome.error.substr(0, outcome.error.find_last_not_of('\n') + 1)));
    } catch (const platform::NotStarted& error) {
        throw std::runtime_error(fmt::format("{}: {}", program.string(), error.what()));
    }
}

void check(const fs::path& file, const std::error_code& error)
{
    if (error)
        throw std::runtime_error(fmt::format("{}: {}", file.string(), error.message()));
}

void write(const fs::path& unit, const std::string& text, const fs::path* link)
{
    check(unit, platform::replaceFile(unit, text));
    if (link == nullptr)
        return;
    std::error_code error = platform::createPrivateFolder(link->parent_path());
    if (!error && !fs::is_symlink(*link, error))
        fs::create_symlink(unit, *link, error);
    check(*link, error);
}

void refuseForeign(const fs::path& unit)
{
    const auto text = platform::readFile(unit);
    if (text && !propertyListOf(*text))
        throw std::runtime_error(fmt::format("{} is there and was not made by launchctl.", unit.string()));
}

void removeFiles(const Files& files)
{
    for (const fs::path& file : {files.timerLink, files.serviceLink, files.timer, files.service}) {
        std::error_code error;
        fs::remove(file, error);
        check(file, error);
    }
}

/// The manager knows a program by its path alone.
Job withPath(Job job)
{
    std::string& program = job.arguments.front();
    if (program.starts_with('/'))
        return job;
    const fs::path found = platform::findProgram(program);
    if (found.empty())
        throw std::runtime_error(fmt::format("the program {} is not found along PATH.", program));
    program = fs::absolute(found);
    return job;
}

} // namespace

bool runs()
{
    const std::string path = runtimeFolder() / "systemd" / "private";
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.size() >= sizeof address.sun_path)
        return false;
    path.copy(address.sun_path, path.size());
    const platform::Descriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    return ::connect(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
}

bool lingers()
{
    const passwd* user = ::getpwuid(::getuid());
    std::error_code error;
    return user != nullptr && fs::exists(fs::path(kLingering) / user->pw_name, error);
}

std::vector<std::string> loaded()
{
    std::vector<std::string> labels;
    std::error_code error;
    const fs::path folder = Files("").service.parent_path();
    for (fs::directory_iterator entry(folder, error), end; !error && entry != end; entry.increment(error)) {
        const std::string label = entry->path().stem();
        if (entry->path().extension() == kService && isLoaded(label))
            labels.push_back(label);
    }
    std::ranges::sort(labels);
    return labels;
}

bool isLoaded(const std::string& label)
{
    return !propertyList(label).empty();
}

fs::path propertyList(const std::string& label)
{
    return propertyListOf(platform::readFile(Files(label).service).value_or("")).value_or("");
}

void load(const Job& job)
{
    const Units units = unitsOf(withPath(job), std::chrono::system_clock::now());
    const Files files(job.label);
    refuseForeign(files.service);
    refuseForeign(files.timer);
    try {
        check(files.service, platform::createPrivateFolder(files.service.parent_path()));
        write(files.service, units.service, job.runAtLoad ? &files.serviceLink : nullptr);
        if (units.timer)
            write(files.timer, *units.timer, &files.timerLink);
        systemctl({"daemon-reload"});
        if (units.timer)
            systemctl({"start", files.timer.filename()});
        if (job.runAtLoad)
            requestRun(job.label);
    } catch (const std::exception&) {
        removeFiles(files);
        throw;
    }
}

bool unload(const std::string& label)
{
    const Files files(label);
    if (!isLoaded(label))
        return false;
    std::error_code error;
    const bool hasTimer = fs::exists(files.timer, error);
    removeFiles(files);
    if (hasTimer)
        systemctl({"stop", files.timer.filename()});
    systemctl({"daemon-reload"});
    return true;
}

void requestRun(const std::string& label)
{
    systemctl({"start", "--no-block", Files(label).service.filename()});
}

} // namespace mervo::jobs::systemd
