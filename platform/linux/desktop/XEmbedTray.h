#pragma once

#include <QAbstractNativeEventFilter>

#include <functional>
#include <optional>

struct xcb_connection_t;

namespace mervo::platform {

/// The older kind of tray, an X window that takes in icons (freedesktop.org System Tray Protocol 0.3). Without an X
/// server there is none. Learns of its coming and going from the events of the application's own connection.
class XEmbedTray final : public QAbstractNativeEventFilter {
public:
    XEmbedTray();
    XEmbedTray(const XEmbedTray&) = delete;
    XEmbedTray& operator=(const XEmbedTray&) = delete;
    ~XEmbedTray() override;

    bool isPresent() const { return owner_ != 0; }
    /// What the tray's own text colour tells, where it names one.
    std::optional<bool> isDark() const { return isDark_; }

    std::function<void()> onChange;

    bool nativeEventFilter(const QByteArray& kind, void* event, qintptr* result) override;

private:
    void look();
    void readColours();

    xcb_connection_t* connection_ = nullptr;
    unsigned selection_ = 0, manager_ = 0, colours_ = 0; ///< atoms
    unsigned owner_ = 0; ///< the tray's window; 0: there is none
    std::optional<bool> isDark_;
};

} // namespace mervo::platform
