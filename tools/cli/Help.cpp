#include "tools/cli/Help.h"

#include "tools/cli/Commands.h"

#include <algorithm>
#include <fmt/format.h>

namespace mervo::cli {

std::string helpOfAll()
{
    std::size_t width = 0;
    for (const Command* command : kCommands)
        width = std::max(width, command->name.size());
    std::string page = "mervo: act in the owner's applications through one gate that the owner controls\n\n"
                       "usage: mervo <command> [words ...]\n\n";
    for (const Command* command : kCommands)
        page += fmt::format("  {:<{}}  {}\n", command->name, width, command->summary);
    page += "\n"
            "  mervo help <command>  what a command promises, with examples\n"
            "  mervo --version       the version\n\n"
            "Exit status: 0 done (also when an action now waits for the owner), 1 failed or refused, 2 wrong usage.\n"
            "Approving, rejecting, rules and raising the autonomy level are for a person, in the cockpit.\n";
    return page;
}

std::string helpOf(const Command& command)
{
    std::string page = fmt::format("{}\n{}\n", usageLine(command), command.help);
    page += "\nOptions:\n";
    for (const Option& option : command.options)
        page += fmt::format("  {:<12}  {}\n", option.name, option.help);
    page += fmt::format("  {:<12}  {}\n", "--help, -h", "this page");
    return page;
}

} // namespace mervo::cli
