#pragma once

#include "core/feedback/channels/AskChannel.h"

#include <span>
#include <string_view>

/// The table of channels.
namespace mervo::AskChannels {

/// In the order in which they are offered.
std::span<const AskChannel* const> all();

/// The channel of this id, in any letter case; mail for every other word.
const AskChannel& channel(std::string_view id);

} // namespace mervo::AskChannels
