#pragma once

#include "core/policy/Tool.h"
#include "frontends/mcp/Protocol.h"
#include "frontends/mcp/ToolNames.h"

#include <array>
#include <string>
#include <string_view>

namespace mervo::mcp {

/// The catalogue as `tools/list` shows it: always the same tools in the same order, described once and kept as text.
/// For one thread.
class ToolPublisher {
public:
    /// The whole result, as JSON.
    const std::string& list(Naming naming, Era era);

    /// One entry of the list, as JSON: the name, a title, the summary word for word, the arguments as a schema, and
    /// the four hints, which are all written since an absent one has a meaning of its own.
    static std::string describe(const Tool& tool, Naming naming);

    /// The name for display: "mail.replyAll" is "Mail: reply all".
    static std::string title(std::string_view id);

private:
    std::array<std::string, 4> lists_; ///< one for each naming and era, made when first asked for
};

} // namespace mervo::mcp
