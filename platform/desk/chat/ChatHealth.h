#pragma once

#include "platform/desk/health/HealthChecks.h"

namespace mervo::desk {

/// The command that sends messages.
std::vector<Finding> examineChatSettings(const Configuration& configuration);
/// The database of messages.
std::vector<Finding> examineChatData();

inline constexpr HealthChecks kChatHealth{examineChatSettings, examineChatData};

} // namespace mervo::desk
