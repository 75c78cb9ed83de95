#pragma once

/// The request to stop whatever this process does for a tool: programs that `run` waits for are ended, waits for the
/// network are interrupted, and nothing new is started. For a process that is about to exit: a request cannot be
/// withdrawn.
namespace mervo::platform::Stop {

/// `why` must stay valid for ever; the first one counts. Allowed in a signal handler.
void request(const char* why) noexcept;

/// The reason given with the request; null as long as there is none. Any thread.
const char* reason() noexcept;

/// A descriptor for poll that becomes readable with the request; -1 when the system has none left. Any thread.
int descriptor() noexcept;

} // namespace mervo::platform::Stop
