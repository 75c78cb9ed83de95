#pragma once

#include "platform/screens.h"

#include <optional>
#include <span>
#include <string>
#include <vector>

namespace mervo {

/// The screens as scripts place windows on them: coordinates of AppleScript, with y growing downwards from the upper
/// edge of the reference screen, which is the one whose frame begins at (0, 0), else the first. Nothing here throws.
class RondelScreens {
public:
    struct Display {
        int index = 0; ///< its place in the platform's list, from 0; identifies it in lists
        std::string bounds; ///< "{left, top, right, bottom}", for `set bounds`
        std::string size; ///< "<width>x<height>"
        bool isMain = false;

        bool operator==(const Display&) const = default;
    };

    /// The platform's screens as they are now.
    static std::vector<Display> displays();
    /// Nothing when there is no display with that index.
    static std::optional<std::string> bounds(int index);

    /// The displays of a list of screens. Coordinates are rounded down to whole numbers.
    static std::vector<Display> displays(std::span<const platform::Screen> screens);
};

} // namespace mervo
