#include "platform/linux/screens/ScreensModule.h"
#include "platform/unified_log.h"

#include <algorithm>
#include <cstdlib>
#include <stdexcept>

namespace mervo::platform {
namespace {

std::vector<Monitor> monitors()
{
    std::vector<Monitor> found;
    std::string why;
    load(kScreensModule)(&found, &why);
    if (!why.empty())
        throw std::runtime_error(why);
    return found;
}

/// The main one is the first that the display calls primary, else the first of all.
std::vector<Screen> framed(const std::vector<Monitor>& monitors)
{
    std::vector<Screen> found;
    if (monitors.empty())
        return found;
    auto main = std::ranges::find(monitors, true, &Monitor::isPrimary);
    if (main == monitors.end())
        main = monitors.begin();
    for (auto each = monitors.begin(); each != monitors.end(); ++each) {
        found.push_back({.name = each->name,
            .x = static_cast<double>(each->left - main->left),
            .y = static_cast<double>((main->top + main->height) - (each->top + each->height)),
            .width = static_cast<double>(each->width),
            .height = static_cast<double>(each->height),
            .isMain = each == main,
            .left = each->left,
            .top = each->top});
    }
    return found;
}

} // namespace

std::vector<Screen> screens() noexcept
{
    const char* display = std::getenv("DISPLAY");
    if (display == nullptr || *display == '\0')
        return {};
    try {
        return framed(monitors());
    } catch (const std::exception& error) {
        logError("Screens", std::string("the screens cannot be listed: ") + error.what());
        return {};
    }
}

} // namespace mervo::platform
