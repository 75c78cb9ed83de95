#pragma once

/// The request that what this process does for a tool come to an end now: programs that `run` waits for are ended,
/// waits for the network are broken off, and nothing new is started. For a process that is about to end itself: there
/// is no way back.
namespace mervo::platform::Stop {

/// `why` must live for ever; the first one counts. Allowed in a signal handler.
void request(const char* why) noexcept;

/// What the request said; null as long as there is none. Any thread.
const char* reason() noexcept;

/// A descriptor that is readable from the request on, for poll; -1 when the system has none left. Any thread.
int descriptor() noexcept;

} // namespace mervo::platform::Stop
