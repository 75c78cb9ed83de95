#include "frontends/cli/Help.h"

#include "frontends/cli/Commands.h"
#include "frontends/cli/Wrap.h"

#include <algorithm>
#include <fmt/format.h>

namespace mervo::cli {

std::string helpOfAll()
{
    std::size_t width = 0;
    for (const Command* command : kCommands)
        width = std::max(width, command->name.size());
    std::string page = "mervo: act in the owner's applications through one gate that the owner controls\n\n"
                       "usage: mervo <command> [words ...]\n\nCommands:\n";
    for (const Command* command : kCommands)
        page += fmt::format("  {:<{}}  {}\n", command->name, width, command->summary);
    page +=
        "\n"
        "  mervo help <command>  what a command promises, with examples\n"
        "  mervo --version       the version\n\n"
        "Approving, rejecting, rules and raising the autonomy level are for a person, in\nthe cockpit.\n\n"
        "Files, below ~/mervo or where MERVO_HOME points:\n"
        "    config.json   the settings\n"
        "    mervo.sqlite  rules and audit trail\n"
        "    pending/      what waits for the owner, a file each\n\n"
        "Exit status: 0 done (also when an action now waits for the owner), 1 failed or\nrefused, 2 wrong usage.\n\n"
        "See also: mervo-cockpit (for the owner), mervo-mcp (for agents), man mervo\n";
    return page;
}

std::string helpOf(const Command& command, std::size_t width)
{
    std::string page = fmt::format("{}\n{}\nOptions:\n", usageLine(command), rewrapped(command.help, width));
    for (const Option& option : command.options)
        page += fmt::format("  {:<12}  {}\n", option.name, option.help);
    page += fmt::format("  {:<12}  {}\n", "--help, -h", "this page");
    return page;
}

} // namespace mervo::cli
