#include "platform/desk/session/WindowClosing.h"

#include "platform/desk/session/XDisplay.h"

#include <algorithm>
#include <vector>

namespace mervo::desk {
namespace {

constexpr std::uint32_t kMostWindows = 4096;

void close(const XConnection& on, xcb_window_t root, xcb_window_t window)
{
    ask(on, root, window, "_NET_CLOSE_WINDOW", {XCB_CURRENT_TIME, kFromPager});
}

} // namespace

int closeWindowsOf(std::span<const pid_t> processes)
{
    const XConnection display = connectToDisplay();
    if (!display)
        return 0;
    int closed = 0;
    for (auto screen = xcb_setup_roots_iterator(xcb_get_setup(display.get())); screen.rem > 0;
         xcb_screen_next(&screen)) {
        const xcb_window_t root = screen.data->root;
        for (const xcb_window_t window : property(display, root, "_NET_CLIENT_LIST", XCB_ATOM_WINDOW, kMostWindows)) {
            const auto owner = property(display, window, "_NET_WM_PID", XCB_ATOM_CARDINAL, 1);
            if (owner.empty() || std::ranges::find(processes, static_cast<pid_t>(owner.front())) == processes.end())
                continue;
            close(display, root, window);
            ++closed;
        }
    }
    awaitServer(display);
    return closed;
}

} // namespace mervo::desk
