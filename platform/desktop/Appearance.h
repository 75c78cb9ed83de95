#pragma once

#include <functional>

namespace mervo::platform {

/// How the person wants windows to look. Main thread only.
class Appearance {
public:
    Appearance() = default;
    Appearance(const Appearance&) = delete;
    Appearance& operator=(const Appearance&) = delete;
    virtual ~Appearance() = default;

    virtual bool isDark() const = 0; ///< windows should be dark
    virtual bool isAnimated() const = 0; ///< false: the person wants nothing to move

    /// Called on the event loop after one of these has changed.
    std::function<void()> onChange;
};

} // namespace mervo::platform
