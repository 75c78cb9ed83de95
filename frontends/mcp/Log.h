#pragma once

#include <string_view>

/// A line for whoever looks after the client: "mervo-mcp: ..." on standard error, made safe to show. Standard output
/// belongs to the protocol. Never throws and never waits: a line that cannot be written at once is dropped.
namespace mervo::mcp {

void logLine(std::string_view text) noexcept;

} // namespace mervo::mcp
