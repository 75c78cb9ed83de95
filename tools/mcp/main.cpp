#include "core/tools/guides/MervoGuides.h"
#include "tools/mcp/Log.h"
#include "tools/mcp/Options.h"
#include "tools/mcp/Server.h"

#include <exception>
#include <unistd.h>

int main(int argc, char** argv)
{
    using namespace mervo;
    const mcp::Options options = mcp::readOptions(argc, argv);
    if (options.exitStatus) {
        return *options.exitStatus;
    }
    try {
        mcp::Server server(options, MervoGuides::kBuiltInLlm);
        const int status = server.run();
        if (server.leftWork()) {
            ::_exit(status); // a thread still works for a client that no longer listens
        }
        return status;
    } catch (const std::exception& failure) {
        mcp::logLine(failure.what());
        return 1;
    }
}
