#pragma once

#include <functional>

namespace mervo::platform {

/// Whether a panel shows tray icons at present. Watches, never polls. Main thread only.
class TrayHost {
public:
    TrayHost() = default;
    TrayHost(const TrayHost&) = delete;
    TrayHost& operator=(const TrayHost&) = delete;
    virtual ~TrayHost() = default;

    virtual bool isPresent() const = 0;
    /// The panel is dark, as far as that is known, so an icon of one colour must be light.
    virtual bool isDark() const = 0;

    /// Called on the event loop after one of these has changed.
    std::function<void()> onChange;
};

} // namespace mervo::platform
