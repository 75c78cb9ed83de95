#include "platform/desk/session/WindowPlacing.h"

#include "platform/desk/session/XDisplay.h"

#include <algorithm>
#include <chrono>
#include <optional>
#include <thread>

namespace mervo::desk {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::seconds kPatience{1}; // for a window manager to take a window over
constexpr std::chrono::milliseconds kPause{20};
constexpr int kMostAncestors = 32;

struct Place {
    xcb_window_t window = XCB_NONE; ///< the program's own top-level window
    xcb_window_t root = XCB_NONE;
    bool isManaged = false; ///< by a window manager, which says so in WM_STATE (ICCCM 4.1.3.1)
};

bool isManaged(const XConnection& display, xcb_window_t window)
{
    return !property(display, window, "WM_STATE", XCB_GET_PROPERTY_TYPE_ANY, 2).empty();
}

/// The window itself or the nearest above it that is managed, else the last below the root. Nothing when it is gone.
std::optional<Place> topLevel(const XConnection& display, xcb_window_t window)
{
    Place place;
    for (int step = 0; step < kMostAncestors; ++step) {
        const XReply<xcb_query_tree_reply_t> tree(
            xcb_query_tree_reply(display.get(), xcb_query_tree(display.get(), window), nullptr));
        if (!tree)
            break;
        place = {window, tree->root, isManaged(display, window)};
        if (place.isManaged || tree->parent == tree->root || tree->parent == XCB_NONE)
            return place;
        window = tree->parent;
    }
    return std::nullopt;
}

bool hasManager(const XConnection& display, xcb_window_t root)
{
    return !property(display, root, "_NET_SUPPORTING_WM_CHECK", XCB_ATOM_WINDOW, 1).empty();
}

std::optional<Place> awaitManager(const XConnection& display, xcb_window_t window)
{
    const auto end = Clock::now() + kPatience;
    auto place = topLevel(display, window);
    while (place && !place->isManaged && hasManager(display, place->root) && Clock::now() < end) {
        std::this_thread::sleep_for(kPause);
        place = topLevel(display, window);
    }
    return place;
}

std::uint32_t bits(int value)
{
    return static_cast<std::uint32_t>(value);
}

/// Place and size count with the frame; a request names the size without it.
void askManager(const XConnection& display, const Place& place, int left, int top, int width, int height)
{
    constexpr std::uint32_t kNorthWest = 1, kAllFour = 0xF00, kSource = kFromPager << 12;
    auto frame = property(display, place.window, "_NET_FRAME_EXTENTS", XCB_ATOM_CARDINAL, 4); // left right top bottom
    frame.resize(4);
    const int inside[] = {
        width - static_cast<int>(frame[0] + frame[1]), height - static_cast<int>(frame[2] + frame[3])};
    ask(display, place.root, place.window, "_NET_MOVERESIZE_WINDOW",
        {kNorthWest | kAllFour | kSource, bits(left), bits(top), bits(std::max(inside[0], 1)),
            bits(std::max(inside[1], 1))});
}

} // namespace

bool placeWindow(std::uint32_t window, int left, int top, int width, int height)
{
    const XConnection display = connectToDisplay();
    const auto place = display ? awaitManager(display, window) : std::nullopt;
    if (!place)
        return false;
    if (place->isManaged) {
        askManager(display, *place, left, top, width, height);
    } else {
        const std::uint32_t values[] = {bits(left), bits(top), bits(std::max(width, 1)), bits(std::max(height, 1))};
        xcb_configure_window(display.get(), place->window,
            XCB_CONFIG_WINDOW_X | XCB_CONFIG_WINDOW_Y | XCB_CONFIG_WINDOW_WIDTH | XCB_CONFIG_WINDOW_HEIGHT, values);
    }
    awaitServer(display);
    return true;
}

} // namespace mervo::desk
