#include "platform/launchctl/Commands.h"

#include <algorithm>
#include <fmt/format.h>
#include <iostream>
#include <string>
#include <vector>

using namespace mervo::jobs;

namespace {

std::string usage()
{
    std::string text = "usage: launchctl COMMAND [ARGUMENT...]\n\n";
    for (const CommandOfJobs& command : commands())
        text += fmt::format("  {:<10} {:<28} {}\n", command.name, command.arguments, command.summary);
    return text
        + "\nUID is your number (id -u). Property lists lie in ~/Library/LaunchAgents. The user's systemd starts the "
          "jobs\n"
          "where it runs, else a runner of the own does; runner in [jobs] of desk.toml decides otherwise.\n"
          "Exit status: 0 done, 1 failed, 2 not understood, 3 not loaded, 4 loaded already.\n";
}

Exit run(const std::vector<std::string>& words)
{
    if (!words.empty() && (words.front() == "help" || words.front() == "--help")) {
        std::cout << usage();
        return Exit::done;
    }
    const auto found =
        words.empty() ? commands().end() : std::ranges::find(commands(), words.front(), &CommandOfJobs::name);
    if (found == commands().end()) {
        std::cerr << (words.empty()
                ? usage()
                : fmt::format("launchctl: there is no command \"{}\"; see launchctl help.\n", words.front()));
        return Exit::usage;
    }
    try {
        found->run({words.begin() + 1, words.end()}, {std::cout, std::cerr});
        std::cout.flush();
        return std::cout ? Exit::done : Exit::failed;
    } catch (const CommandError& error) {
        std::cerr << fmt::format("launchctl: {}\n", error.what());
        if (error.exit == Exit::usage)
            std::cerr << fmt::format("usage: launchctl {} {}\n", found->name, found->arguments);
        return error.exit;
    } catch (const std::exception& error) {
        std::cerr << fmt::format("launchctl: {}\n", error.what());
        return Exit::failed;
    }
}

} // namespace

/// launchctl: loads jobs, which are started at their times, and shows them.
int main(int argc, char** argv)
{
    return static_cast<int>(run({argv + 1, argv + argc}));
}
