#pragma once

#include <functional>

namespace mervo::platform {

/// Whether some panel shows tray icons at present. Watches, and never polls. Main thread only.
class TrayHost {
public:
    TrayHost() = default;
    TrayHost(const TrayHost&) = delete;
    TrayHost& operator=(const TrayHost&) = delete;
    virtual ~TrayHost() = default;

    virtual bool isPresent() const = 0;
    /// The panel is dark, as far as that is known: an icon of one colour must be light there.
    virtual bool isDark() const = 0;

    /// Called on the event loop after an answer changed.
    std::function<void()> onChange;
};

} // namespace mervo::platform
