#pragma once

#include <string>
#include <vector>

/// The screens on which windows can be opened.
namespace mervo::platform {

/// One screen, in pixels of the platform.
struct Screen {
    std::string name; ///< as the system calls it ("DP-1")
    /// Its frame, y growing upwards: x and y are those of its lower left corner, and (0, 0) is the lower left corner of
    /// the main screen. Screens to the left of that one and below it have negative coordinates.
    double x = 0;
    double y = 0;
    double width = 0;
    double height = 0;
    bool isMain = false; ///< the owner's primary screen
    /// Its upper left corner as windows are placed: from the display's own upper left corner, y growing downwards.
    int left = 0;
    int top = 0;
};

/// The screens of the session's display, in its order; exactly one is the main one. Asked anew at each call. Empty
/// without a display, or with one that lists none (Wayland without an X server). Waits up to 5 s for the display; does
/// not throw, and the log has the reason when the display cannot be asked.
std::vector<Screen> screens() noexcept;

} // namespace mervo::platform
