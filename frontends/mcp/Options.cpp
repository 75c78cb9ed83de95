#include "frontends/mcp/Options.h"

#include <CLI/CLI.hpp>

#include <iostream>
#include <string>

namespace mervo::mcp {

namespace {
constexpr int kUsageError = 2;
}

Options readOptions(int argc, const char* const* argv)
{
    CLI::App app("Serves Mervo's tools over standard input and output, to be started by a client of the Model Context "
                 "Protocol.",
        "mervo-mcp");
    std::string names = "auto";
    app.add_option("--tool-names", names,
           "dots: mail.search; underscore: mail_search; auto: underscore for clients known to refuse dots")
        ->check(CLI::IsMember({"dots", "underscore", "auto"}))
        ->capture_default_str();
    app.set_version_flag("--version", "mervo-mcp " MERVO_VERSION);

    Options options;
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& end) {
        options.exitStatus = app.exit(end, std::cout, std::cerr) == 0 ? 0 : kUsageError;
        return options;
    }
    if (names != "auto")
        options.naming = names == "dots" ? Naming::dots : Naming::underscores;
    return options;
}

} // namespace mervo::mcp
