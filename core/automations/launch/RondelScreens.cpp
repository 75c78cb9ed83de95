#include "core/automations/launch/RondelScreens.h"

#include <algorithm>
#include <cmath>
#include <fmt/format.h>

namespace mervo {
namespace {

using platform::Screen;

long down(double value)
{
    return static_cast<long>(std::floor(value));
}

/// The height, in the platform's frames, that AppleScript counts from.
double topOf(std::span<const Screen> screens)
{
    auto reference = std::ranges::find_if(screens, [](const Screen& screen) { return screen.x == 0 && screen.y == 0; });
    if (reference == screens.end())
        reference = screens.begin();
    return reference->y + reference->height;
}

} // namespace

std::vector<RondelScreens::Display> RondelScreens::displays()
{
    return displays(platform::screens());
}

std::optional<std::string> RondelScreens::bounds(int index)
{
    const auto all = displays();
    const auto found = std::ranges::find(all, index, &Display::index);
    return found == all.end() ? std::nullopt : std::optional(found->bounds);
}

std::vector<RondelScreens::Display> RondelScreens::displays(std::span<const Screen> screens)
{
    std::vector<Display> found;
    if (screens.empty())
        return found;
    const double reference = topOf(screens);
    for (const Screen& screen : screens) {
        const double top = reference - (screen.y + screen.height);
        found.push_back({.index = static_cast<int>(found.size()),
            .bounds = fmt::format("{{{}, {}, {}, {}}}", down(screen.x), down(top), down(screen.x + screen.width),
                down(top + screen.height)),
            .size = fmt::format("{}x{}", down(screen.width), down(screen.height)),
            .isMain = screen.isMain});
    }
    return found;
}

} // namespace mervo
