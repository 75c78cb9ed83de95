#include "platform/linux/screens/ScreensModule.h"
#include "platform/time_limit.h"

#include <cstdlib>
#include <memory>
#include <xcb/randr.h>

namespace mervo::platform {
namespace {

constexpr std::chrono::seconds kPatience{5};

struct Free {
    void operator()(void* memory) const { std::free(memory); }
};
struct Disconnect {
    void operator()(xcb_connection_t* connection) const { xcb_disconnect(connection); }
};
template <typename Reply>
using Held = std::unique_ptr<Reply, Free>;
using Connection = std::unique_ptr<xcb_connection_t, Disconnect>;

std::string atomName(const Connection& display, xcb_atom_t atom)
{
    const Held<xcb_get_atom_name_reply_t> reply(
        xcb_get_atom_name_reply(display.get(), xcb_get_atom_name(display.get(), atom), nullptr));
    return reply ? std::string(xcb_get_atom_name_name(reply.get()),
               static_cast<std::size_t>(xcb_get_atom_name_name_length(reply.get())))
                 : std::string();
}

/// The screen of the connection that DISPLAY names (":0.1" names the second).
const xcb_screen_t* screenOf(const Connection& display, int number)
{
    auto screen = xcb_setup_roots_iterator(xcb_get_setup(display.get()));
    while (number-- > 0 && screen.rem > 1)
        xcb_screen_next(&screen);
    return screen.data;
}

/// RandR 1.5: the monitors, which is what desktops place windows by. Null on an older server.
Held<xcb_randr_get_monitors_reply_t> askMonitors(const Connection& display, const xcb_screen_t* screen)
{
    const auto* extension = xcb_get_extension_data(display.get(), &xcb_randr_id);
    if (extension == nullptr || extension->present == 0)
        return nullptr;
    const Held<xcb_randr_query_version_reply_t> version(
        xcb_randr_query_version_reply(display.get(), xcb_randr_query_version(display.get(), 1, 5), nullptr));
    if (!version || version->major_version < 1 || (version->major_version == 1 && version->minor_version < 5))
        return nullptr;
    return Held<xcb_randr_get_monitors_reply_t>(
        xcb_randr_get_monitors_reply(display.get(), xcb_randr_get_monitors(display.get(), screen->root, 1), nullptr));
}

/// None: the display does not answer.
std::vector<Monitor> askDisplay()
{
    std::vector<Monitor> monitors;
    int number = 0;
    const Connection display(xcb_connect(nullptr, &number));
    if (xcb_connection_has_error(display.get()) != 0)
        return monitors;
    const xcb_screen_t* screen = screenOf(display, number);
    if (const auto reply = askMonitors(display, screen)) {
        for (auto each = xcb_randr_get_monitors_monitors_iterator(reply.get()); each.rem > 0;
             xcb_randr_monitor_info_next(&each))
            monitors.push_back({atomName(display, each.data->name), each.data->x, each.data->y, each.data->width,
                each.data->height, each.data->primary != 0});
    }
    if (monitors.empty()) // one screen, as large as the display
        monitors.push_back({"screen", 0, 0, screen->width_in_pixels, screen->height_in_pixels, true});
    return monitors;
}

} // namespace

void mervoMonitors(std::vector<Monitor>* monitors, std::string* why)
{
    *monitors = withinLimit(kPatience, askDisplay).value_or(std::vector<Monitor>());
    if (monitors->empty())
        *why = "the X server of DISPLAY does not answer";
}

} // namespace mervo::platform
