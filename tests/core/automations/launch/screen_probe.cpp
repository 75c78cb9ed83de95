#include "core/automations/launch/RondelScreens.h"

#include <cstdio>

/// Prints a line for each screen: its name, its display's bounds and size, whether it is the main one.
int main()
{
    const auto screens = mervo::platform::screens();
    for (const auto& display : mervo::RondelScreens::displays(screens)) {
        std::printf("%s %s %s%s\n", screens[static_cast<std::size_t>(display.index)].name.c_str(),
            display.bounds.c_str(), display.size.c_str(), display.isMain ? " main" : "");
    }
    return 0;
}
