#include "core/tools/guides/MervoGuides.h"
#include "frontends/mcp/Log.h"
#include "frontends/mcp/Options.h"
#include "frontends/mcp/Server.h"

#include <exception>
#include <unistd.h>

int main(int argc, char** argv)
{
    using namespace mervo;
    const mcp::Options options = mcp::readOptions(argc, argv);
    if (options.exitStatus)
        return *options.exitStatus;
    if (::isatty(STDIN_FILENO) == 1) {
        mcp::logLine(
            "serves Mervo's tools to an agent and is started by the agent's client, in whose settings its path is "
            "the command of a stdio server; it now waits for the client's messages, one line of JSON each, on "
            "standard input. Ctrl-D ends it; \"man mervo-mcp\" says more.");
    }
    try {
        mcp::Server server(options, MervoGuides::kBuiltInLlm);
        const int status = server.run();
        if (server.leftWork())
            ::_exit(status); // a thread still works for a client that no longer listens
        return status;
    } catch (const std::exception& failure) {
        mcp::logLine(failure.what());
        return 1;
    }
}
