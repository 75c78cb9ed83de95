#pragma once

#include <ostream>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

/// What launchctl can do: loads jobs, shows them and starts them, with systemd or the own runner.
namespace mervo::jobs {

/// The exit status of launchctl.
enum class Exit { done = 0, failed = 1, usage = 2, notLoaded = 3, alreadyLoaded = 4 };

/// what() is a sentence for standard error.
class CommandError final : public std::runtime_error {
public:
    CommandError(Exit status, const std::string& sentence)
        : std::runtime_error(sentence)
        , exit(status)
    {
    }
    Exit exit;
};

/// Where a command writes: its answer, and what is to be noted besides.
struct Streams {
    std::ostream& out;
    std::ostream& notes;
};

struct CommandOfJobs {
    const char* name;
    const char* arguments;
    const char* summary;
    /// Throws CommandError and std::runtime_error.
    void (*run)(const std::vector<std::string>& words, const Streams& streams);
};

/// In the order of the help.
std::span<const CommandOfJobs> commands();

} // namespace mervo::jobs
