#pragma once

#include <string>
#include <string_view>

namespace mervo {

/// The caller's name for the audit trail: the entry's word ("mcp", "auto"), a colon and the caller's own name made safe
/// to show on one line: control characters of ASCII left out, others that control or change direction written as code
/// points, ill-formed UTF-8 as U+FFFD; at most 64 characters of the name, and "unknown" when nothing is left.
std::string actorName(std::string_view entry, std::string_view name);

} // namespace mervo
