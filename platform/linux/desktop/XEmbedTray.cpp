#include "platform/linux/desktop/XEmbedTray.h"

#include <QGuiApplication>

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>
#include <string_view>
#include <xcb/xcb.h>

namespace mervo::platform {

namespace {

constexpr std::uint8_t kEventMask = 0x7f; ///< without the mark of an event that another client sent
constexpr unsigned kColourWords = 12; ///< four colours; the first is the text's
constexpr unsigned kMiddle = 0x8000;

struct Free {
    void operator()(void* reply) const { std::free(reply); }
};
template <typename Reply>
using Owned = std::unique_ptr<Reply, Free>;

unsigned atom(xcb_connection_t* connection, std::string_view name)
{
    const auto cookie = xcb_intern_atom(connection, 0, static_cast<std::uint16_t>(name.size()), name.data());
    const Owned<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(connection, cookie, nullptr));
    return reply ? reply->atom : 0;
}

} // namespace

XEmbedTray::XEmbedTray()
{
    if (const auto* x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>())
        connection_ = x11->connection();
    if (connection_ == nullptr)
        return;
    selection_ = atom(connection_, "_NET_SYSTEM_TRAY_S0");
    manager_ = atom(connection_, "MANAGER");
    colours_ = atom(connection_, "_NET_SYSTEM_TRAY_COLORS");
    QCoreApplication::instance()->installNativeEventFilter(this);
    look();
}

XEmbedTray::~XEmbedTray()
{
    if (QCoreApplication::instance() != nullptr)
        QCoreApplication::instance()->removeNativeEventFilter(this);
}

void XEmbedTray::look()
{
    const auto cookie = xcb_get_selection_owner(connection_, selection_);
    const Owned<xcb_get_selection_owner_reply_t> reply(xcb_get_selection_owner_reply(connection_, cookie, nullptr));
    owner_ = reply ? reply->owner : 0;
    isDark_.reset();
    if (owner_ == 0)
        return;
    const std::uint32_t mask = XCB_EVENT_MASK_STRUCTURE_NOTIFY; // its end; Qt asks this window for the same
    xcb_change_window_attributes(connection_, owner_, XCB_CW_EVENT_MASK, &mask);
    readColours();
}

void XEmbedTray::readColours()
{
    const auto cookie = xcb_get_property(connection_, 0, owner_, colours_, XCB_ATOM_CARDINAL, 0, kColourWords);
    const Owned<xcb_get_property_reply_t> reply(xcb_get_property_reply(connection_, cookie, nullptr));
    if (!reply || reply->format != 32 || reply->value_len < 3)
        return;
    const auto* text = static_cast<const std::uint32_t*>(xcb_get_property_value(reply.get()));
    isDark_ = (text[0] * 3 + text[1] * 6 + text[2]) / 10 >= kMiddle;
}

bool XEmbedTray::nativeEventFilter(const QByteArray& kind, void* event, qintptr*)
{
    if (kind != "xcb_generic_event_t")
        return false;
    const auto* any = static_cast<const xcb_generic_event_t*>(event);
    const int type = any->response_type & kEventMask;
    bool isNews = false;
    if (type == XCB_CLIENT_MESSAGE) {
        const auto* message = static_cast<const xcb_client_message_event_t*>(event);
        isNews = message->type == manager_ && message->data.data32[1] == selection_;
    } else if (type == XCB_DESTROY_NOTIFY) {
        isNews = owner_ != 0 && static_cast<const xcb_destroy_notify_event_t*>(event)->window == owner_;
    }
    if (isNews) {
        look();
        if (onChange)
            onChange();
    }
    return false;
}

} // namespace mervo::platform
