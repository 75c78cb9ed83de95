#pragma once

#include "platform/modules.h"
#include "platform/screens.h"

#include <string>

namespace mervo::platform {

/// A screen as the display has it: from its upper left corner, y growing downwards.
struct Monitor {
    std::string name;
    int left = 0;
    int top = 0;
    int width = 0;
    int height = 0;
    bool isPrimary = false;
};

/// The module of the bundle that holds XCB with RandR. Gives the monitors in the display's order, none where there is
/// no X display; `why` says what failed.
extern "C" void mervoMonitors(std::vector<Monitor>* monitors, std::string* why);
inline constexpr auto kScreensModule = MERVO_MODULE("mervo-screens.so", mervoMonitors);

} // namespace mervo::platform
