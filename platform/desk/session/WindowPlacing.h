#pragma once

#include <cstdint>

namespace mervo::desk {

/// Session::placeWindow on an X display: through the window manager (EWMH 1.5: _NET_MOVERESIZE_WINDOW,
/// _NET_FRAME_EXTENTS), without one directly.
bool placeWindow(std::uint32_t window, int left, int top, int width, int height);

} // namespace mervo::desk
