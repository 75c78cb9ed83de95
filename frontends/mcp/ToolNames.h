#pragma once

#include "core/policy/Tool.h"

#include <string>
#include <string_view>

/// The names under which the tools are published, and how a name in a call is resolved.
///
/// A tool's id has a dot ("mail.search"). Rules, queue and audit trail always use the id. Some
/// hosts refuse a dot in a name; for them the same tools are published with "_" in its place.
namespace mervo::mcp {

enum class Naming { dots, underscores };

namespace ToolNames {

/// What a client of this name can take: underscores where it is known to refuse dots.
Naming forClient(std::string_view clientName);

std::string published(std::string_view id, Naming naming);

/// The tool of a name in either form, whichever is published; null when there is none.
const Tool* find(std::string_view name);

} // namespace ToolNames

} // namespace mervo::mcp
