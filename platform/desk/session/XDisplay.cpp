#include "platform/desk/session/XDisplay.h"

#include <algorithm>
#include <cstring>

namespace mervo::desk {
namespace {

xcb_atom_t atom(const XConnection& to, std::string_view name)
{
    const auto asked = xcb_intern_atom(to.get(), 0, static_cast<std::uint16_t>(name.size()), name.data());
    const XReply<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(to.get(), asked, nullptr));
    return reply ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
}

} // namespace

XConnection connectToDisplay()
{
    if (std::getenv("DISPLAY") == nullptr)
        return nullptr;
    XConnection display(xcb_connect(nullptr, nullptr));
    if (xcb_connection_has_error(display.get()) != 0)
        display.reset();
    return display;
}

std::vector<std::uint32_t> property(
    const XConnection& to, xcb_window_t window, std::string_view name, xcb_atom_t type, std::uint32_t most)
{
    const auto asked = xcb_get_property(to.get(), 0, window, atom(to, name), type, 0, most);
    const XReply<xcb_get_property_reply_t> reply(xcb_get_property_reply(to.get(), asked, nullptr));
    if (!reply || reply->format != 32)
        return {};
    std::vector<std::uint32_t> values(static_cast<std::size_t>(xcb_get_property_value_length(reply.get())) / 4);
    if (!values.empty())
        std::memcpy(values.data(), xcb_get_property_value(reply.get()), values.size() * 4);
    return values;
}

void ask(const XConnection& on, xcb_window_t root, xcb_window_t window, std::string_view what,
    const std::array<std::uint32_t, 5>& values)
{
    xcb_client_message_event_t event = {};
    event.response_type = XCB_CLIENT_MESSAGE;
    event.format = 32;
    event.window = window;
    event.type = atom(on, what);
    std::ranges::copy(values, event.data.data32);
    xcb_send_event(on.get(), 0, root, XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT,
        reinterpret_cast<const char*>(&event));
}

void awaitServer(const XConnection& display)
{
    atom(display, "WM_STATE"); // its reply comes behind all that was asked before
}

} // namespace mervo::desk
