#pragma once

#include <span>
#include <sys/types.h>

namespace mervo::desk {

/// Asks the window manager to close the windows that these processes say are theirs (EWMH 1.5: _NET_CLIENT_LIST,
/// _NET_WM_PID, _NET_CLOSE_WINDOW). The number of windows; 0 without a display or a window manager.
int closeWindowsOf(std::span<const pid_t> processes);

} // namespace mervo::desk
