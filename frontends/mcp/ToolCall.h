#pragma once

#include "core/policy/Tool.h"
#include "frontends/mcp/Message.h"
#include "frontends/mcp/Protocol.h"

#include <string>

namespace mervo::mcp {

/// One call of a tool on its way to the gate.
struct ToolCall {
    RequestId id;
    const Tool* tool = nullptr; ///< of the catalogue
    Args args;
    std::string actor;
    Era era = Era::session;
};

/// Takes the call through the gate and gives the line that answers it. Blocks for as long as the tool runs; any
/// thread may call it. Throws only std::bad_alloc.
std::string answer(const ToolCall& call);

} // namespace mervo::mcp
