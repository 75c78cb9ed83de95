#include "cockpit/shell/Options.h"

#include <string_view>

namespace mervo {

const char* const kUsage = "Usage: mervo-cockpit [--open | --hidden]\n"
                           "\n"
                           "Shows Mervo's icon in the tray: what the agents may do, and what waits for you. A second\n"
                           "start brings the popover of the first one forward.\n"
                           "\n"
                           "  --open      open the popover at once\n"
                           "  --hidden    open nothing, as at log-in\n"
                           "  --version   print the version\n"
                           "  --help      print this\n";

Options Options::parse(std::span<char* const> words)
{
    Options options;
    for (const std::string_view word : words) {
        if (word == "--help" || word == "-h") {
            options.task = Task::help;
        } else if (word == "--version") {
            options.task = Task::version;
        } else if (word == "--open") {
            options.open = true;
        } else if (word == "--hidden") {
            options.hidden = true;
        } else {
            options.task = Task::wrongUsage;
            options.complaint = "\"" + std::string(word) + "\" is no option; see mervo-cockpit --help.";
            return options;
        }
    }
    return options;
}

} // namespace mervo
