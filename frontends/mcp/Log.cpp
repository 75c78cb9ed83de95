#include "frontends/mcp/Log.h"

#include "core/foundation/Text.h"

#include <exception>
#include <poll.h>
#include <string>
#include <unistd.h>

namespace mervo::mcp {

void logLine(std::string_view text) noexcept
{
    try {
        const std::string line = "mervo-mcp: " + Text::visibleLine(text) + "\n";
        pollfd state{STDERR_FILENO, POLLOUT, 0};
        if (::poll(&state, 1, 0) == 1 && (state.revents & POLLOUT) != 0) [[maybe_unused]]
            const auto written = ::write(STDERR_FILENO, line.data(), line.size());
    } catch (const std::exception&) {
        // Out of memory: a log line is the first thing to do without.
    }
}

} // namespace mervo::mcp
