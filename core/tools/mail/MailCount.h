#pragma once

#include "core/policy/Tool.h"

#include <optional>
#include <string>
#include <string_view>

/// What a bulk operation would touch, for the approval card.
namespace mervo::MailCount {

/// "3 message(s), 1.5 MB" from the count script's "3|1536"; nothing for any other text.
std::optional<std::string> line(std::string_view counted);

/// Counts with the filter that the operation uses, and appends the suffix. Blocks while the script runs; nothing
/// when it fails.
std::optional<std::string> preview(const Args& args, std::string_view suffix);

} // namespace mervo::MailCount
