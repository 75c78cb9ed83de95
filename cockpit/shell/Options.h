#pragma once

#include <span>
#include <string>

namespace mervo {

/// What the command line of the cockpit asks for.
struct Options {
    enum class Task { start, help, version, wrongUsage };

    Task task = Task::start;
    bool open = false; ///< the popover, as soon as the icon stands
    bool hidden = false; ///< started at login: a cockpit that already runs stays as it is
    std::string complaint; ///< of wrong usage, one sentence

    static Options parse(std::span<char* const> words);
};

/// What --help prints.
extern const char* const kUsage;

} // namespace mervo
