#pragma once

#include <cstdint>
#include <string>

/// The user's permission to automate applications, by their bundle ids ("com.apple.mail"), and their running state.
/// Nothing here throws.
namespace mervo::platform::automation {

/// What the system answers; any other number is a failure of its own.
using Status = std::int32_t;
inline constexpr Status kAllowed = 0;
inline constexpr Status kNotRunning = -600; ///< asked or not: the system answers for a running application only
inline constexpr Status kRefused = -1743;
inline constexpr Status kWouldAsk = -1744; ///< nothing is decided
inline constexpr Status kFailed = -10000; ///< what is decided cannot be told; the log says why

enum class AskUser { no, yes };

/// May the application be automated? With AskUser::yes the user is asked where nothing is decided, and the call waits
/// for the answer, which lasts.
Status permission(const std::string& bundleId, AskUser ask) noexcept;

/// Starts an application in the background, hidden, and returns when it is there. One that cannot be started is passed
/// over; the log says why.
void launch(const std::string& bundleId) noexcept;

/// Asks a running application to quit, never by force. What goes wrong is in the log.
void terminate(const std::string& bundleId) noexcept;

} // namespace mervo::platform::automation
