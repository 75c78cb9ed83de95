#pragma once

#include "core/policy/Tool.h"

#include <string>
#include <string_view>

/// Under which names the tools are published, and how a name of a call is understood.
///
/// A tool's id has a dot ("mail.search"). Everywhere behind this server (rules, queue, audit trail) the id stands. Some
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
