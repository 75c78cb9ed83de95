#include "platform/desk/session/WindowClosing.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string_view>
#include <vector>
#include <xcb/xcb.h>

namespace mervo::desk {
namespace {

constexpr std::uint32_t kMostWindows = 4096;
constexpr std::uint32_t kFromPager = 2; // EWMH, source indication: what the user does with the windows of others

struct Free {
    void operator()(void* memory) const { std::free(memory); }
};
struct Disconnect {
    void operator()(xcb_connection_t* connection) const { xcb_disconnect(connection); }
};
using Connection = std::unique_ptr<xcb_connection_t, Disconnect>;

xcb_atom_t atom(const Connection& to, std::string_view name)
{
    const auto asked = xcb_intern_atom(to.get(), 0, static_cast<std::uint16_t>(name.size()), name.data());
    const std::unique_ptr<xcb_intern_atom_reply_t, Free> reply(xcb_intern_atom_reply(to.get(), asked, nullptr));
    return reply ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
}

/// A property of 32-bit values; empty when the window has none.
std::vector<std::uint32_t> property(
    const Connection& to, xcb_window_t window, std::string_view name, xcb_atom_t type, std::uint32_t most)
{
    const auto asked = xcb_get_property(to.get(), 0, window, atom(to, name), type, 0, most);
    const std::unique_ptr<xcb_get_property_reply_t, Free> reply(xcb_get_property_reply(to.get(), asked, nullptr));
    if (!reply || reply->format != 32)
        return {};
    std::vector<std::uint32_t> values(static_cast<std::size_t>(xcb_get_property_value_length(reply.get())) / 4);
    if (!values.empty())
        std::memcpy(values.data(), xcb_get_property_value(reply.get()), values.size() * 4);
    return values;
}

void close(const Connection& on, xcb_window_t root, xcb_window_t window)
{
    xcb_client_message_event_t event = {};
    event.response_type = XCB_CLIENT_MESSAGE;
    event.format = 32;
    event.window = window;
    event.type = atom(on, "_NET_CLOSE_WINDOW");
    event.data.data32[0] = XCB_CURRENT_TIME;
    event.data.data32[1] = kFromPager;
    xcb_send_event(on.get(), 0, root, XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT,
        reinterpret_cast<const char*>(&event));
}

} // namespace

int closeWindowsOf(std::span<const pid_t> processes)
{
    if (std::getenv("DISPLAY") == nullptr)
        return 0;
    const Connection display(xcb_connect(nullptr, nullptr));
    if (xcb_connection_has_error(display.get()) != 0)
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
    // A reply says that the server has taken what was sent before.
    property(display, xcb_setup_roots_iterator(xcb_get_setup(display.get())).data->root, "_NET_WM_NAME", 0, 0);
    return closed;
}

} // namespace mervo::desk
